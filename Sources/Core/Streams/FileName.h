// File names as messages show them.
#pragma once

#include "CString.h"

namespace qel {

// The path with forward slashes, so that a message reads the same on every system.
inline CString displayFileName(const CString& path)
{
    CString name;
    for (std::size_t i = 0; i < path.length(); ++i) {
        name.append(path[i] == u'\\' ? u'/' : path[i]);
    }
    return name;
}

} // namespace qel
