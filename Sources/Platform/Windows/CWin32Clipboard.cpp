// Reading and writing the clipboard.
#include "CWin32Clipboard.h"

#include "CWin32Window.h"
#include "WideText.h"

#include <algorithm>
#include <string>

namespace qel::platform {

namespace {

// Programs that watch the clipboard hold it for a moment after each change.
constexpr int kOpenAttempts = 10;
constexpr DWORD kOpenPauseMs = 5;

} // namespace

// Needs a window to own what is put in.
bool CWin32Clipboard::open() const
{
    const auto owner =
        std::ranges::find_if(session_->windows, [](const auto* window) { return window->window(); });
    if (owner == session_->windows.end()) {
        return false;
    }
    for (int attempt = 1; !OpenClipboard((*owner)->window()); ++attempt) {
        if (attempt == kOpenAttempts) {
            return false;
        }
        Sleep(kOpenPauseMs);
    }
    return true;
}

void CWin32Clipboard::setText(const std::string& text)
{
    std::string lines;
    for (const char character : text) {
        lines += character == '\n' ? "\r\n" : std::string(1, character);
    }
    const std::wstring wide = wideText(lines);
    if (!open()) {
        return;
    }
    EmptyClipboard();
    const std::size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (void* data = memory ? GlobalLock(memory) : nullptr) {
        std::copy_n(wide.c_str(), wide.size() + 1, static_cast<wchar_t*>(data));
        GlobalUnlock(memory);
    }
    if (memory && !SetClipboardData(CF_UNICODETEXT, memory)) { // else it is the system's now
        GlobalFree(memory);
    }
    CloseClipboard();
}

void CWin32Clipboard::requestText(TextHandler handler)
{
    std::optional<std::string> text;
    if (open()) {
        const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
        if (const auto* data = static_cast<const wchar_t*>(memory ? GlobalLock(memory) : nullptr)) {
            const std::size_t room = GlobalSize(memory) / sizeof(wchar_t);
            const wchar_t* end = std::find(data, data + room, L'\0');
            text = utf8Text(std::wstring(data, end));
            std::erase(*text, '\r');
            GlobalUnlock(memory);
        }
        CloseClipboard();
    }
    if (text && text->size() > kMaxTextBytes) {
        text.reset();
    }
    handler(text);
}

} // namespace qel::platform
