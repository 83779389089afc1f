// Keeps keys from the host while a text is edited.
#pragma once

#include "WindowsApi.h"

namespace qel::platform {

class CWin32Window;

// While installed, keys for the window are taken out of the thread's messages before the host's loop sees
// them: hosts look for shortcuts there, and translate dead keys, which must not happen twice. What comes from
// input methods, screen keyboards and lists of symbols has no key of its own and is taken as text. One a
// thread; the last one counts. Alt with a key, as in Alt+F4, stays the system's.
class CWin32KeyHook
{
public:
    CWin32KeyHook() = default;
    CWin32KeyHook(const CWin32KeyHook&) = delete;
    CWin32KeyHook& operator=(const CWin32KeyHook&) = delete;
    ~CWin32KeyHook() { remove(); }

    void install(CWin32Window& window);
    void remove();

private:
    static LRESULT CALLBACK procedure(int code, WPARAM wParam, LPARAM lParam);
    // Leaves nothing in `message` of what the window has got.
    static void take(MSG& message, CWin32Window& window);

    HHOOK hook_ = nullptr;
    CWin32Window* window_ = nullptr;
};

} // namespace qel::platform
