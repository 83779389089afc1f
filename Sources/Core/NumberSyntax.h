// The integer and real syntax of attributes, indices and settings.
#pragma once

#include "CString.h"

#include <optional>

namespace qel {

// Optional "-"; then "0x", "0X", "#" or "$" (base 16), a leading "0" (base 8; "0" alone is 0), otherwise
// base 10. Any other character, or nothing behind a prefix, fails. A hexadecimal number may fill all 32 bits
// and wraps into the sign; any other that does not fit a 32-bit signed integer fails.
std::optional<std::int32_t> parseInteger(const CString& text);

// Optional sign, digits, optional "." and digits; at least one digit. No exponent. Correctly rounded, in any
// locale.
std::optional<double> parseReal(const CString& text);

// Decimal text with a fixed number of decimals, in any locale.
CString formatReal(double value, int decimals);

} // namespace qel
