// The window that tells a user why the program could not start.
#pragma once

#include <functional>
#include <string>

namespace qel::platform {

// Shows `text` and below it the lines of `details` (separated by '\n'), in UTF-8, and blocks the calling
// thread until the user closes the window. On Linux the lines go to stderr too, where they can be copied
// from; without a display that is all, and the call returns at once, so that a plug-in scan on a server never
// hangs.
void showFailureWindow(const std::string& title, const std::string& text, const std::string& details);

using FailureWindowHook =
    std::function<void(const std::string& title, const std::string& text, const std::string& details)>;

// A hook takes the window's place, for tests and for tools nobody watches; an empty one brings the window
// back. Returns the hook that stood.
FailureWindowHook setFailureWindowHook(FailureWindowHook hook);

} // namespace qel::platform
