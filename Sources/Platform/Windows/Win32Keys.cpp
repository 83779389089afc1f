// Messages of keys as our events.
#include "Win32Keys.h"

#include <array>
#include <string>

namespace qel::platform {

namespace {

// The text of a key on the user's layout, empty for none and for a dead key, which is kept for the next one.
std::wstring textOf(WPARAM key, LPARAM lParam)
{
    std::array<BYTE, 256> state{};
    GetKeyboardState(state.data());
    std::array<wchar_t, 8> buffer{};
    const auto scanCode = static_cast<UINT>((lParam >> 16) & 0xFF);
    const int length = ToUnicode(static_cast<UINT>(key), scanCode, state.data(), buffer.data(),
                                 static_cast<int>(buffer.size()), 0);
    return length > 0 ? std::wstring(buffer.data(), static_cast<std::size_t>(length)) : std::wstring();
}

// Surrogates joined, control characters left out.
std::u32string charactersOf(const std::wstring& text)
{
    std::u32string characters;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool isPair =
            IS_HIGH_SURROGATE(text[i]) && i + 1 < text.size() && IS_LOW_SURROGATE(text[i + 1]);
        if (isPair) {
            characters += 0x10000 + ((unit - 0xD800) << 10) + (char32_t{text[++i]} - 0xDC00);
        } else if (unit >= 0x20 && (unit < 0x7F || unit >= 0xA0) && (unit < 0xD800 || unit > 0xDFFF)) {
            characters += unit;
        }
    }
    return characters;
}

} // namespace

bool isWin32KeyDown(int key)
{
    return GetKeyState(key) < 0;
}

Modifiers win32Modifiers()
{
    return {isWin32KeyDown(VK_SHIFT), isWin32KeyDown(VK_CONTROL), isWin32KeyDown(VK_MENU)};
}

KeyEvent win32KeyRelease(WPARAM wParam)
{
    KeyEvent event;
    event.key = static_cast<std::uint32_t>(wParam);
    event.modifiers = win32Modifiers();
    if (event.key >= VK_NUMPAD0 && event.key <= VK_NUMPAD9) {
        event.key += '0' - VK_NUMPAD0;
    } else if (event.key == VK_SHIFT || event.key == VK_CONTROL || event.key == VK_MENU) {
        event.key = 0;
    }
    return event;
}

std::vector<KeyEvent> win32KeyPresses(WPARAM wParam, LPARAM lParam)
{
    KeyEvent event = win32KeyRelease(wParam);
    // AltGr is Ctrl and Alt at once. With one of them alone, and with a key that is none, there is no text.
    const bool isAltGr = event.modifiers.isCtrl && event.modifiers.isAlt;
    std::u32string text;
    if (isAltGr || (!event.modifiers.isCtrl && !event.modifiers.isAlt)) {
        text = charactersOf(textOf(wParam, lParam));
    }
    if (isAltGr && !text.empty()) {
        event.modifiers.isCtrl = false;
        event.modifiers.isAlt = false;
    }
    const bool isDeadKey = (MapVirtualKeyW(static_cast<UINT>(wParam), MAPVK_VK_TO_CHAR) & 0x80000000u) != 0;
    if (isDeadKey && text.empty() && !event.modifiers.isCtrl) {
        return {};
    }
    std::vector<KeyEvent> events;
    for (std::size_t i = 0; i == 0 || i < text.size(); ++i) {
        event.character = i < text.size() ? text[i] : 0;
        events.push_back(event);
        event.key = 0;
    }
    return events;
}

char32_t win32Character(WPARAM unit)
{
    // Halves of pairs come one by one, and no edit takes such characters.
    const std::u32string text = charactersOf(std::wstring(1, static_cast<wchar_t>(unit)));
    return text.empty() ? 0 : text[0];
}

} // namespace qel::platform
