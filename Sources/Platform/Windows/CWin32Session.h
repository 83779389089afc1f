// What the windows of one display share.
#pragma once

#include "WindowsApi.h"

#include <algorithm>
#include <vector>

namespace qel::platform {

class CWin32Window;

// The windows that live, kept by a shared pointer of the display and of each of them.
struct CWin32Session
{
    CWin32Window* find(HWND handle) const;

    std::vector<CWin32Window*> windows;
    bool isOpen = true; // until the display is destroyed
};

} // namespace qel::platform
