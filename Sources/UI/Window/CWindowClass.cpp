// The window system's classes of our windows.
#include "CWindowClass.h"

#include "WindowClasses.h"

namespace qel {

CError CWindowClass::registerClasses()
{
    auto failed = platform::InterfaceClass::kNone;
    const int code = platform::registerInterfaceClasses(failed);
    if (code == 0) {
        return {};
    }
    if (failed == platform::InterfaceClass::kBridge) {
        QEL_FAIL(
            {}, "@qelstr_CWindowClass_init_BridgeClassReg Unable to register bridge window class (error %1).",
            code);
    }
    QEL_FAIL({}, "@qelstr_CWindowClass_init_ClassReg Unable to register window class (error %1).", code);
}

} // namespace qel
