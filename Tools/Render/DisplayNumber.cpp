// Values as people and plug-ins write them.
#include "Render/DisplayNumber.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

namespace qel::tools {

namespace {

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// The number at the front of `text`, which is cut off it. Independent of the user's language.
std::optional<double> takeNumber(std::string_view& text)
{
    double sign = 1.0;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        sign = text[0] == '-' ? -1.0 : 1.0;
        text.remove_prefix(1);
    }
    if (startsIgnoringCase(text, "inf")) {
        text.remove_prefix(3);
        return sign * std::numeric_limits<double>::infinity();
    }
    if (text.empty() || !(std::isdigit(static_cast<unsigned char>(text[0])) || text[0] == '.')) {
        return std::nullopt;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return sign * value;
}

} // namespace

std::string trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == text.npos ? ""
                              : std::string(text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1));
}

bool equalsIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && startsIgnoringCase(a, b);
}

bool startsIgnoringCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), text.begin(),
                                                      [](char a, char b) { return lower(a) == lower(b); });
}

std::optional<double> parseDisplayNumber(std::string_view text, std::string_view label)
{
    const std::string whole = trimmed(text);
    std::string_view rest = whole;
    std::optional<double> value = takeNumber(rest);
    if (!value) {
        return std::nullopt;
    }
    const std::string unit = trimmed(rest);
    const std::string wanted = trimmed(label);
    const auto isUnit = [&](std::string_view part) {
        return part.empty() || equalsIgnoringCase(part, wanted);
    };
    if (isUnit(unit)) {
        return value;
    }
    if (lower(unit[0]) == 'k' && isUnit(std::string_view(unit).substr(1))) {
        return *value * 1000.0;
    }
    return std::nullopt;
}

std::optional<float> parseNorm(std::string_view text)
{
    std::string whole = trimmed(text);
    if (whole.empty() || whole.back() != 'n') {
        return std::nullopt;
    }
    whole.pop_back();
    std::string_view rest = whole;
    const std::optional<double> value = takeNumber(rest);
    if (!value || !rest.empty() || *value < 0.0 || *value > 1.0) {
        return std::nullopt;
    }
    return static_cast<float>(*value);
}

std::optional<int> parseIndex(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0) {
        return std::nullopt;
    }
    return value;
}

} // namespace qel::tools
