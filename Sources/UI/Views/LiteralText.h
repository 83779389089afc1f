// Texts that are shown as they are.
#pragma once

#include "CString.h"

namespace qel {

// What users and files have named goes to views by attributes whose braces stand for other attributes and
// whose brackets are markup. In a literal text four characters for private use take the places of both; texts
// draw each as the character that it stands for. What gives a text back to a user or a file makes it plain
// again.
CString literalText(const CString& plain);
CString plainText(const CString& literal);

// The character that is seen.
char16_t plainCharacter(char16_t literal);

} // namespace qel
