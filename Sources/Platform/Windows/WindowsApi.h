// The Windows headers, the same way in every source.
#pragma once

#ifndef UNICODE
#define UNICODE
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef _WIN32_WINNT
#define _WIN32_WINNT 0x0601
#endif

#include <windows.h>

namespace qel::platform {

// The library or program this code is linked into, which is not the program that loaded it.
HINSTANCE moduleHandle();

inline int lastError()
{
    return static_cast<int>(GetLastError());
}

} // namespace qel::platform
