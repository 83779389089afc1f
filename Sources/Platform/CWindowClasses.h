// The window classes of the library's hidden windows.
#pragma once

#include <string>

namespace qel::platform {

enum class WindowClass
{
    kNone,
    kTimer,  // hidden windows of timers
    kBridge, // hidden windows that carry posted calls
};

// Registers both classes, with names made of the two words and the class's use. Called once when the library
// starts, before any event loop is made. Returns 0 or the system's error number, and in `outFailed` the class
// that failed; none is left registered then. Systems without window classes succeed.
[[nodiscard]] int registerWindowClasses(const std::string& maker, const std::string& product,
                                        WindowClass& outFailed);

// Called when the library ends: Windows does not do it for a library that is unloaded. Safe after a failure.
void unregisterWindowClasses();

} // namespace qel::platform
