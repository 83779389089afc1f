// The window that tells a user why the program could not start.
#pragma once

#include <string>

namespace qel::platform {

// Shows `text` and below it the lines of `details` (separated by '\n'), in UTF-8, and blocks the calling
// thread until the user closes the window. On Linux the lines go to stderr too, where they can be copied
// from; without a display that is all, and the call returns at once, so that a plug-in scan on a server never
// hangs.
void showFailureWindow(const std::string& title, const std::string& text, const std::string& details);

} // namespace qel::platform
