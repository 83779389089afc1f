// Messages of keys as our events.
#pragma once

#include "SystemEvents.h"
#include "WindowsApi.h"

#include <vector>

namespace qel::platform {

// As of the message that is being handled.
Modifiers win32Modifiers();
bool isWin32KeyDown(int key);

// What a WM_KEYDOWN types on the user's layout: one event, or one a character. None for a dead key, which is
// kept for the next one.
std::vector<KeyEvent> win32KeyPresses(WPARAM wParam, LPARAM lParam);
KeyEvent win32KeyRelease(WPARAM wParam);
// The character of a WM_CHAR, which has no key; 0 for one that no edit takes.
char32_t win32Character(WPARAM unit);

} // namespace qel::platform
