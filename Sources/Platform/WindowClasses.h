// The window classes of the library, for hidden windows and for those of the interface.
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

enum class InterfaceClass
{
    kNone,
    kWindow, // windows of the interface
    kBridge, // what a main window lies in, in a host's window
};

// Registers the classes of the windows that CSystemDisplay makes, "UIWindow" and "Bridge", at the first call;
// further calls succeed at once. Must come before createWindow(). Returns 0 or the system's error number, and
// in `outFailed` the class that failed. unregisterWindowClasses() takes them back.
[[nodiscard]] int registerInterfaceClasses(InterfaceClass& outFailed);

} // namespace qel::platform
