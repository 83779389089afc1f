// Numbers as users read and type them.
#include "DisplayNumber.h"

#include "NumberSyntax.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace qel {

namespace {

constexpr double kPowersOfTen[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};

// Collects the digits of a number; `divisor` is the power of ten that belongs to those behind the point.
struct DigitCollector
{
    static constexpr std::uint64_t kMaxBefore = (std::numeric_limits<std::uint64_t>::max() - 9) / 10;

    void addInteger(unsigned digit)
    {
        if (digits > kMaxBefore) {
            overflow *= 10.0;
            return;
        }
        digits = digits * 10 + digit;
    }
    void addFraction(unsigned digit)
    {
        if (digits > kMaxBefore || divisor > kMaxBefore) {
            return;
        }
        digits = digits * 10 + digit;
        divisor *= 10;
    }
    double value() const { return static_cast<double>(digits) / static_cast<double>(divisor) * overflow; }

    std::uint64_t digits = 0;
    std::uint64_t divisor = 1;
    double overflow = 1.0;
};

} // namespace

std::optional<double> parseDisplayNumber(const CString& text)
{
    const bool isNegative = text.startsWith("-");
    DigitCollector number;
    bool hasDigit = false;
    bool isFraction = false;
    for (std::size_t i = isNegative ? 1 : 0; i < text.length(); ++i) {
        const char16_t c = text[i];
        if (c >= u'0' && c <= u'9') {
            hasDigit = true;
            const auto digit = static_cast<unsigned>(c - u'0');
            isFraction ? number.addFraction(digit) : number.addInteger(digit);
        } else if ((c == u'.' || c == u',') && !isFraction) {
            isFraction = true;
        } else {
            return std::nullopt;
        }
    }
    if (!hasDigit) {
        return std::nullopt;
    }
    // "-0" is the integer 0 with its sign changed: a plain zero.
    return isNegative && number.digits != 0 ? -number.value() : number.value();
}

CString withoutUnit(const CString& text, const CString& unit)
{
    const auto isBlank = [&](std::size_t i) {
        return text[i] == u' ' || text[i] == u'\t' || text[i] == 0xA0;
    };
    const auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
    std::size_t begin = 0;
    std::size_t end = text.length();
    const auto trimEnd = [&] {
        while (end > begin && isBlank(end - 1)) {
            --end;
        }
    };
    while (begin < end && isBlank(begin)) {
        ++begin;
    }
    trimEnd();
    bool hasUnit = unit.length() <= end - begin;
    for (std::size_t i = 0; i < unit.length() && hasUnit; ++i) {
        hasUnit = lower(text[end - unit.length() + i]) == lower(unit[i]);
    }
    if (hasUnit) {
        end -= unit.length();
        trimEnd();
    }
    return text.substring(begin, end - begin);
}

std::optional<double> parseTypedNumber(const CString& text, const CString& unit)
{
    const CString number = withoutUnit(text, unit);
    const bool isPositive = number.startsWith("+") && !number.startsWith("+-");
    return parseDisplayNumber(isPositive ? number.substring(1) : number);
}

CString formatDisplayNumber(double value, int decimals)
{
    if (!std::isfinite(value)) {
        return {};
    }
    const double scaled = std::abs(value) * kPowersOfTen[decimals];
    if (scaled >= kNoHalves) {
        return formatReal(value, decimals);
    }
    const auto units = static_cast<std::uint64_t>(std::floor(scaled + 0.5));
    std::string text = std::to_string(units);
    if (decimals > 0) {
        const auto places = static_cast<std::size_t>(decimals);
        text.insert(0, places + 1 - std::min(text.size(), places + 1), '0');
        text.insert(text.size() - places, 1, '.');
    }
    if (value < 0 && units != 0) {
        text.insert(0, 1, '-');
    }
    return CString(text);
}

} // namespace qel
