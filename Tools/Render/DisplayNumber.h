// Values as people and plug-ins write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qel::tools {

// "+12.0", "-7 dB", "1.2k", "1.2 kHz", "-inf" as numbers: "label" is the unit that may follow, in any case,
// with or without a k for thousands. Nothing for any other text.
std::optional<double> parseDisplayNumber(std::string_view text, std::string_view label = {});
// "0.5n": a position from 0 to 1.
std::optional<float> parseNorm(std::string_view text);
// A whole number of decimal digits.
std::optional<int> parseIndex(std::string_view text);

std::string trimmed(std::string_view text);
bool equalsIgnoringCase(std::string_view a, std::string_view b);
bool startsIgnoringCase(std::string_view text, std::string_view prefix);

} // namespace qel::tools
