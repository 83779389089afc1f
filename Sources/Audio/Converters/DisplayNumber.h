// Numbers as users read and type them.
#pragma once

#include "CString.h"
#include "Math/Rounding.h"

#include <optional>

namespace qel {

// Optional "-", digits, optional "." or "," and digits; at least one digit and nothing else. Independent of
// the locale. The number is put together in 64-bit integers and divided once, so every text of up to 15
// digits gives the double nearest to it. Of longer ones the integer digits without room count as zeros (the
// result may be infinite) and such fraction digits are dropped.
std::optional<double> parseDisplayNumber(const CString& text);

// A number as a user may type it: with blanks around it, with a "+", and with its unit behind it, in capitals
// or not.
std::optional<double> parseTypedNumber(const CString& text, const CString& unit);

// The text without blanks around it, and without `unit` and the blanks in front of that, if it ends with it.
CString withoutUnit(const CString& text, const CString& unit);

constexpr int kMaxDecimals = 10;

// Decimal text with a fixed number of decimals (0 to kMaxDecimals), halves away from zero. What shows as zero
// has no sign. Empty for what is not finite: there is no text for it.
CString formatDisplayNumber(double value, int decimals);

} // namespace qel
