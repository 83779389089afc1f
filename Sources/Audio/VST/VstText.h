// Text across the binary interface.
#pragma once

#include "CString.h"

#include <cstddef>

namespace vst24 {

// Writes `text` as UTF-8 into `out`, which has room for `bytes` with the NUL; what does not fit is cut off
// between two characters. A null `out` is let be.
void writeText(char* out, std::size_t bytes, const qel::CString& text);

// The text of a host, read up to its NUL and no further than `bytes`. Null is empty.
qel::CString readText(const void* text, std::size_t bytes);

} // namespace vst24
