// An editor in a host's window, with the system's own pointer, keyboard and clipboard.
#include "EditorRig.h"

#include "EffectLibrary.h"

#include <fstream>
#include <stdexcept>

namespace qel::test {

namespace {

void send(INPUT input)
{
    SendInput(1, &input, sizeof input);
}

void sendKey(WORD code, WORD scan, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = code;
    input.ki.wScan = scan;
    input.ki.dwFlags = flags;
    send(input);
}

HWND systemDialog()
{
    HWND front = nullptr;
    for (const HWND window : topWindows()) {
        wchar_t name[16] = L"";
        GetClassNameW(window, name, 16);
        // A question disables what it is about.
        if (std::wstring(name) == L"#32770" && IsWindowEnabled(window)) {
            front = window;
        }
    }
    return front;
}

} // namespace

ViewPlace placeOf(const std::string& path)
{
    static const ViewPlaces places = [] {
        std::ifstream file(EffectLibrary::path().parent_path() / "views.txt");
        return readPlaces(file);
    }();
    const auto found = places.find(path);
    if (found == places.end()) {
        throw std::runtime_error("no view " + path);
    }
    return found->second;
}

std::vector<HWND> topWindows()
{
    std::vector<HWND> windows;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM list) {
            if (IsWindowVisible(window)) {
                reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&windows));
    return windows;
}

void setClipboard(const std::wstring& text)
{
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    SetClipboardData(CF_UNICODETEXT, memory);
    CloseClipboard();
}

std::wstring clipboard()
{
    std::wstring text;
    if (OpenClipboard(nullptr)) {
        if (const HANDLE memory = GetClipboardData(CF_UNICODETEXT)) {
            text = static_cast<const wchar_t*>(GlobalLock(memory));
            GlobalUnlock(memory);
        }
        CloseClipboard();
    }
    return text;
}

// --- dialogs of the system

DialogUser::DialogUser(std::initializer_list<Act> acts)
    : acts_(acts), timer_(SetTimer(nullptr, 0, 100, &DialogUser::tick))
{
    current = this;
}

DialogUser::~DialogUser()
{
    KillTimer(nullptr, timer_);
    current = nullptr;
}

void CALLBACK DialogUser::tick(HWND, UINT, UINT_PTR, DWORD)
{
    const HWND dialog = current ? systemDialog() : nullptr;
    if (!dialog) {
        return;
    }
    if (current->acts_.empty()) { // nobody expects it: the test fails and goes on
        ADD_FAILURE() << "a dialog is left";
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        return;
    }
    const Act act = current->acts_.front();
    current->acts_.pop_front();
    act(dialog);
}

DialogUser::Act DialogUser::press(int button)
{
    return [button](HWND dialog) { PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0); };
}

DialogUser::Act DialogUser::enter(const std::wstring& path)
{
    return [path](HWND dialog) {
        constexpr int kFileNameField = 0x47C; // cmb13 of dlgs.h
        SetDlgItemTextW(dialog, kFileNameField, path.c_str());
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    };
}

// --- the editor

WindowsEditor::WindowsEditor()
{
    const ERect size = rect();
    window_ = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_CLIPCHILDREN | WS_VISIBLE, 40, 30,
                              size.right, size.bottom, nullptr, nullptr, nullptr, nullptr);
    SetForegroundWindow(window_);
    SetFocus(window_);
}

WindowsEditor::~WindowsEditor()
{
    host_.close();
    DestroyWindow(window_);
}

bool WindowsEditor::open()
{
    return host_.call(vst24::kEditOpen, 0, 0, window_) != 0;
}

ERect WindowsEditor::rect()
{
    ERect* rect = nullptr;
    host_.call(vst24::kEditGetRect, 0, 0, &rect);
    return rect ? *rect : ERect();
}

bool WindowsEditor::runUntil(const std::function<bool()>& condition, DWORD limitMs)
{
    const DWORD start = GetTickCount();
    do {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
            hostKeys_ += message.message == WM_KEYDOWN || message.message == WM_CHAR;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (host_.effect()) {
            host_.call(vst24::kEditIdle);
        }
        if (condition()) {
            return true;
        }
        Sleep(5);
    } while (GetTickCount() - start < limitMs);
    return false;
}

std::vector<COLORREF> WindowsEditor::colours()
{
    const HDC context = GetDC(editor());
    const ERect size = rect();
    std::vector<COLORREF> found;
    for (int y = 4; y < size.bottom; y += 16) {
        for (int x = 4; x < size.right; x += 16) {
            found.push_back(GetPixel(context, x, y));
        }
    }
    ReleaseDC(editor(), context);
    return found;
}

std::vector<HWND> WindowsEditor::others(bool areLists) const
{
    std::vector<HWND> found = topWindows();
    std::erase_if(found, [&](HWND window) {
        const bool isList = (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_NOACTIVATE) != 0;
        return window == window_ || isList != areLists;
    });
    return found;
}

// --- the user

void WindowsEditor::pointerTo(HWND window, int x, int y)
{
    POINT point{x, y};
    ClientToScreen(window, &point);
    SetCursorPos(point.x, point.y);
    run(30);
}

void WindowsEditor::button(DWORD flag)
{
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flag;
    send(input);
    run(20);
}

void WindowsEditor::click(HWND window, const ViewPlace& view)
{
    moveTo(window, view);
    button(MOUSEEVENTF_LEFTDOWN);
    button(MOUSEEVENTF_LEFTUP);
}

HWND WindowsEditor::openDialog(const ViewPlace& view)
{
    click(window_, view);
    if (!runUntil([&] { return !dialogs().empty(); })) {
        return nullptr;
    }
    run(200);
    return dialogs()[0];
}

void WindowsEditor::key(WORD code, bool isDown)
{
    sendKey(code, static_cast<WORD>(MapVirtualKeyW(code, MAPVK_VK_TO_VSC)), isDown ? 0 : KEYEVENTF_KEYUP);
    run(10);
}

void WindowsEditor::type(WORD code, WORD held)
{
    if (held) {
        key(held, true);
    }
    key(code, true);
    key(code, false);
    if (held) {
        key(held, false);
    }
}

void WindowsEditor::insert(wchar_t character)
{
    sendKey(0, character, KEYEVENTF_UNICODE);
    sendKey(0, character, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP);
    run(20);
}

} // namespace qel::test
