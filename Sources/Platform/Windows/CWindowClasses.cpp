// Registration of the classes of hidden windows.
#include "CWindowClasses.h"

#include "CHiddenWindow.h"
#include "WideText.h"
#include "WindowsApi.h"

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

int registerClass(const std::wstring& name)
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof(description);
    description.lpfnWndProc = &CHiddenWindow::procedure;
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

void unregisterWindowClasses()
{
    unregisterClass(names().bridge);
    unregisterClass(names().timer);
}

} // namespace qel::platform
