// X11 knows no window classes to register.
#include "WindowClasses.h"

namespace qel::platform {

int registerWindowClasses(const std::string& /*maker*/, const std::string& /*product*/,
                          WindowClass& outFailed)
{
    outFailed = WindowClass::kNone;
    return 0;
}

void unregisterWindowClasses() {}

int registerInterfaceClasses(InterfaceClass& outFailed)
{
    outFailed = InterfaceClass::kNone;
    return 0;
}

} // namespace qel::platform
