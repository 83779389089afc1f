// Registration of the classes of hidden windows.
#include "WindowClasses.h"

#include "CHiddenWindow.h"
#include "CWin32Window.h"
#include "WideText.h"
#include "WindowClassNames.h"
#include "WindowsApi.h"

#include <mutex>
#include <utility>

namespace qel::platform {

namespace {

struct ClassNames
{
    std::wstring timer;
    std::wstring bridge;
};

ClassNames& names()
{
    static ClassNames instance;
    return instance;
}

std::mutex interfaceClassesMutex; // editors may open on several threads
bool areInterfaceClassesRegistered = false;

int registerClass(const std::wstring& name, WNDPROC procedure = &CHiddenWindow::procedure, UINT style = 0)
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof(description);
    description.style = style;
    description.lpfnWndProc = procedure;
    description.hInstance = moduleHandle();
    description.lpszClassName = name.c_str();
    return RegisterClassExW(&description) ? 0 : lastError();
}

void unregisterClass(std::wstring& name)
{
    if (!name.empty()) {
        UnregisterClassW(name.c_str(), moduleHandle());
        name.clear();
    }
}

} // namespace

const std::wstring& timerClassName()
{
    return names().timer;
}

const std::wstring& bridgeClassName()
{
    return names().bridge;
}

int registerWindowClasses(const std::string& maker, const std::string& product, WindowClass& outFailed)
{
    outFailed = WindowClass::kNone;
    const std::wstring prefix = wideText(maker + product);
    if (const int error = registerClass(prefix + L"Timer")) {
        outFailed = WindowClass::kTimer;
        return error;
    }
    names().timer = prefix + L"Timer";
    if (const int error = registerClass(prefix + L"Bridge")) {
        outFailed = WindowClass::kBridge;
        unregisterClass(names().timer);
        return error;
    }
    names().bridge = prefix + L"Bridge";
    return 0;
}

int registerInterfaceClasses(InterfaceClass& outFailed)
{
    outFailed = InterfaceClass::kNone;
    const std::lock_guard lock(interfaceClassesMutex);
    if (areInterfaceClassesRegistered) {
        return 0;
    }
    if (const int error = registerClass(kInterfaceClassName, &CWin32Window::procedure, CS_DBLCLKS)) {
        outFailed = InterfaceClass::kWindow;
        return error;
    }
    if (const int error = registerClass(kBridgeClassName, &CWin32Window::procedure)) {
        outFailed = InterfaceClass::kBridge;
        UnregisterClassW(kInterfaceClassName, moduleHandle());
        return error;
    }
    areInterfaceClassesRegistered = true;
    return 0;
}

void unregisterWindowClasses()
{
    if (std::exchange(areInterfaceClassesRegistered, false)) {
        UnregisterClassW(kBridgeClassName, moduleHandle());
        UnregisterClassW(kInterfaceClassName, moduleHandle());
    }
    unregisterClass(names().bridge);
    unregisterClass(names().timer);
}

} // namespace qel::platform
