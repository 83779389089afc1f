// The failure window: a text, the details to copy, and a message loop of its own.
#include "FailureWindow.h"

#include "WideText.h"
#include "WindowsApi.h"

namespace qel::platform {

namespace {

constexpr const wchar_t* kClassName = L"ErrorWindowClass";
constexpr DWORD kWindowStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU;
constexpr int kWidthPx = 640; // of the client area
constexpr int kHeightPx = 400;
constexpr int kMarginPx = 14;
constexpr int kTextHeightPx = 72;
constexpr int kFontHeightPx = 13;

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_DESTROY) {
        if (auto* isOpen = reinterpret_cast<bool*>(GetWindowLongPtrW(window, GWLP_USERDATA))) {
            *isOpen = false;
        }
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

// An edit control shows lines only where they end in CR LF.
std::wstring editLines(const std::string& details)
{
    std::string lines;
    for (const char character : details) {
        lines += character == '\n' ? "\r\n" : std::string(1, character);
    }
    return wideText(lines);
}

bool addChild(HWND parent, const wchar_t* className, const std::wstring& text, DWORD style,
              DWORD extendedStyle, RECT place, HFONT font)
{
    const HWND child = CreateWindowExW(extendedStyle, className, text.c_str(), WS_CHILD | WS_VISIBLE | style,
                                       place.left, place.top, place.right - place.left,
                                       place.bottom - place.top, parent, nullptr, moduleHandle(), nullptr);
    if (child) {
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    }
    return child != nullptr;
}

HWND createMainWindow(const std::wstring& title)
{
    RECT frame{0, 0, kWidthPx, kHeightPx};
    AdjustWindowRectEx(&frame, kWindowStyle, FALSE, WS_EX_TOPMOST);
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    return CreateWindowExW(WS_EX_TOPMOST, kClassName, title.c_str(), kWindowStyle,
                           (GetSystemMetrics(SM_CXSCREEN) - width) / 2,
                           (GetSystemMetrics(SM_CYSCREEN) - height) / 2, width, height, nullptr, nullptr,
                           moduleHandle(), nullptr);
}

// Null when one of the windows cannot be made.
HWND createWindows(const std::wstring& title, const std::string& text, const std::string& details, HFONT font)
{
    const HWND window = createMainWindow(title);
    if (!window) {
        return nullptr;
    }
    const int right = kWidthPx - kMarginPx;
    const int textBottom = kMarginPx + kTextHeightPx;
    const DWORD editStyle = ES_MULTILINE | ES_READONLY | WS_VSCROLL | WS_TABSTOP;
    if (addChild(window, L"STATIC", wideText(text), SS_NOPREFIX, 0, {kMarginPx, kMarginPx, right, textBottom},
                 font) &&
        addChild(window, L"EDIT", editLines(details), editStyle, WS_EX_CLIENTEDGE,
                 {kMarginPx, textBottom + kMarginPx, right, kHeightPx - kMarginPx}, font)) {
        return window;
    }
    DestroyWindow(window);
    return nullptr;
}

// Until the window closes, all messages of the thread are served, the host's windows included.
void runMessageLoop(HWND window)
{
    bool isOpen = true;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&isOpen));
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    MSG message{};
    while (isOpen) {
        const BOOL result = GetMessageA(&message, nullptr, 0, 0);
        if (result <= 0) {
            DestroyWindow(window);
            if (result == 0) { // the end of the host's loop, which it must see again
                PostQuitMessage(static_cast<int>(message.wParam));
            }
            return;
        }
        const bool isOurs = message.hwnd == window || IsChild(window, message.hwnd);
        if (isOurs && message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) {
            DestroyWindow(window);
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

bool registerClass()
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof(description);
    description.lpfnWndProc = &procedure;
    description.hInstance = moduleHandle();
    description.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    description.lpszClassName = kClassName;
    return RegisterClassExW(&description) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

} // namespace

void showFailureWindow(const std::string& title, const std::string& text, const std::string& details)
{
    const std::wstring wideTitle = wideText(title);
    const HFONT font = CreateFontW(-kFontHeightPx, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                   OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                                   DEFAULT_PITCH | FF_SWISS, L"Verdana");
    const HWND window = registerClass() ? createWindows(wideTitle, text, details, font) : nullptr;
    if (window) {
        runMessageLoop(window);
    } else {
        MessageBoxW(nullptr, wideText(text + "\n\n" + details).c_str(), wideTitle.c_str(),
                    MB_OK | MB_ICONERROR | MB_TOPMOST);
    }
    // Classes of a library outlive it, and their procedure would then point nowhere.
    UnregisterClassW(kClassName, moduleHandle());
    DeleteObject(font);
}

} // namespace qel::platform
