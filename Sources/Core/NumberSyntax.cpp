// The integer and real syntax of attributes, indices and settings.
#include "NumberSyntax.h"

#include <charconv>
#include <limits>

namespace qel {

namespace {

int digitValue(char16_t c)
{
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    if (c >= u'a' && c <= u'f') {
        return c - u'a' + 10;
    }
    if (c >= u'A' && c <= u'F') {
        return c - u'A' + 10;
    }
    return 16;
}

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

} // namespace

std::optional<std::int32_t> parseInteger(const CString& text)
{
    std::size_t i = 0;
    const bool isNegative = text.startsWith("-");
    i += isNegative ? 1 : 0;

    unsigned base = 10;
    if (i < text.length() && (text[i] == u'#' || text[i] == u'$')) {
        base = 16;
        ++i;
    } else if (i + 1 < text.length() && text[i] == u'0') {
        const bool isHex = text[i + 1] == u'x' || text[i + 1] == u'X';
        base = isHex ? 16 : 8;
        i += isHex ? 2 : 1;
    }
    if (i == text.length()) {
        return std::nullopt;
    }

    const std::uint64_t limit =
        base == 16 ? std::numeric_limits<std::uint32_t>::max()
                   : std::uint64_t{std::numeric_limits<std::int32_t>::max()} + (isNegative ? 1 : 0);
    std::uint64_t magnitude = 0;
    for (; i < text.length(); ++i) {
        const auto digit = static_cast<unsigned>(digitValue(text[i]));
        if (digit >= base) {
            return std::nullopt;
        }
        magnitude = magnitude * base + digit;
        if (magnitude > limit) {
            return std::nullopt;
        }
    }
    const auto bits = static_cast<std::uint32_t>(magnitude);
    return static_cast<std::int32_t>(isNegative ? 0u - bits : bits);
}

std::optional<double> parseReal(const CString& text)
{
    std::string digits;
    std::size_t i = 0;
    if (i < text.length() && (text[i] == u'-' || text[i] == u'+')) {
        if (text[i] == u'-') {
            digits.push_back('-');
        }
        ++i;
    }
    bool hasDigit = false;
    bool hasPoint = false;
    for (; i < text.length(); ++i) {
        if (isDigit(text[i])) {
            hasDigit = true;
        } else if (text[i] == u'.' && !hasPoint) {
            hasPoint = true;
        } else {
            return std::nullopt;
        }
        digits.push_back(static_cast<char>(text[i]));
    }
    if (!hasDigit) {
        return std::nullopt;
    }
    double value = 0;
    const auto result =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    return value;
}

CString formatReal(double value, int decimals)
{
    // The longest double has 309 digits before the point.
    char text[400];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return CString(std::string_view(text, static_cast<std::size_t>(result.ptr - text)));
}

} // namespace qel
