// Numbers in texts of the interface.
#pragma once

#include "CString.h"

namespace qel {

// The format holds one place for the number: "%", flags ("+": a sign in front of positive ones, too; "0":
// filled up with zeros), the least length, ".", the number of decimals (6 without it), "f". With "*" in place
// of "%" the number is shown without its sign, as scales below zero often are. "%%" is a percent sign. A
// number that is shown as zero has no sign. What is no format stays as it is.
CString formatNumber(const CString& format, double value);

} // namespace qel
