// Numbers in texts of the interface.
#include "NumberFormat.h"

#include "NumberSyntax.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace qel {

namespace {

constexpr std::int32_t kMaxLength = 64;
constexpr std::int32_t kMaxDecimals = 9;

struct Place
{
    std::size_t end = 0; // behind the "f"
    bool isSigned = false;
    bool isZeroFilled = false;
    std::int32_t length = 0;
    std::int32_t decimals = 6;
};

std::int32_t readInteger(const CString& text, std::size_t& at)
{
    std::int32_t value = 0;
    for (; at < text.length() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
        value = std::min(value * 10 + static_cast<std::int32_t>(text[at] - u'0'), kMaxLength);
    }
    return value;
}

// From behind the "%" or "*".
std::optional<Place> readPlace(const CString& format, std::size_t at)
{
    Place place;
    for (; at < format.length() && (format[at] == u'+' || format[at] == u'0'); ++at) {
        (format[at] == u'+' ? place.isSigned : place.isZeroFilled) = true;
    }
    place.length = readInteger(format, at);
    if (at < format.length() && format[at] == u'.') {
        ++at;
        place.decimals = std::min(readInteger(format, at), kMaxDecimals);
    }
    if (at >= format.length() || format[at] != u'f') {
        return {};
    }
    place.end = at + 1;
    return place;
}

CString numberText(const Place& place, double value, bool isAbsolute)
{
    CString digits = formatReal(std::fabs(value), place.decimals);
    const bool isZero = parseReal(digits).value_or(1.0) == 0.0;
    const char* const sign = isZero || isAbsolute ? "" : value < 0.0 ? "-" : place.isSigned ? "+" : "";
    CString text = CString(sign) + digits;
    while (text.length() < static_cast<std::size_t>(place.length)) {
        digits = CString(place.isZeroFilled ? "0" : "") + digits;
        text = place.isZeroFilled ? CString(sign) + digits : CString(" ") + text;
    }
    return text;
}

} // namespace

CString formatNumber(const CString& format, double value)
{
    CString text;
    bool isPlaced = false;
    for (std::size_t at = 0; at < format.length();) {
        const bool isPercent = format[at] == u'%';
        if (isPercent && at + 1 < format.length() && format[at + 1] == u'%') {
            text += "%";
            at += 2;
            continue;
        }
        const std::optional<Place> place =
            !isPlaced && (isPercent || format[at] == u'*') ? readPlace(format, at + 1) : std::nullopt;
        if (place) {
            text += numberText(*place, value, !isPercent);
            at = place->end;
            isPlaced = true;
        } else {
            text += format.substring(at, 1);
            ++at;
        }
    }
    return text;
}

} // namespace qel
