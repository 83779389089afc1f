// Names of presets and banks.
#pragma once

#include "CString.h"

#include <vector>

namespace qel {

// As part of the name of a file: without what systems do not take.
CString fileNameOf(const CString& name);

// The name, or the name and the first number that makes it one of its own.
CString uniqueName(const CString& name, const std::vector<CString>& taken);

} // namespace qel
