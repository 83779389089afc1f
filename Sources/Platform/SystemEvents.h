// What windows tell and are told: plain records, the same on every system.
#pragma once

#include <cstdint>

namespace qel::platform {

// A window of the system's own, as hosts hand it over: an X11 window id or an HWND. 0 is none.
using NativeWindow = std::uintptr_t;

// Pixels, y downwards. Empty when a side is not positive.
struct PixelRect
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool contains(int px, int py) const { return px >= x && py >= y && px - x < width && py - y < height; }
    bool operator==(const PixelRect&) const = default;
};

PixelRect unite(const PixelRect& a,
                const PixelRect& b); // the smallest that holds both; an empty one adds none
PixelRect intersect(const PixelRect& a, const PixelRect& b);

struct Modifiers
{
    bool isShift = false;
    bool isCtrl = false;
    bool isAlt = false;

    bool operator==(const Modifiers&) const = default;
};

enum class MouseButton
{
    kLeft,
    kRight,
    kMiddle,
};

// Where the pointer is and what is held. In a press its own button counts as down already, in a release as
// up.
struct PointerEvent
{
    int x = 0; // in the window; outside of it while a button that went down in the window is held
    int y = 0;
    int screenX = 0;
    int screenY = 0;
    bool isLeftDown = false;
    bool isRightDown = false;
    bool isMiddleDown = false;
    Modifiers modifiers;
};

// The pointer, wherever it is.
struct PointerState
{
    int screenX = 0;
    int screenY = 0;
    bool isLeftDown = false;
    bool isRightDown = false;
    bool isMiddleDown = false;
};

struct ButtonEvent : PointerEvent
{
    MouseButton button = MouseButton::kLeft;
    // The second press of a double click; a third press in a row is a first one again. False in releases.
    bool isDoubleClick = false;
};

struct WheelEvent : PointerEvent
{
    double delta = 0.0; // whole notches, positive away from the user; smooth wheels are added up to notches
};

// Keys without a character of their own, by their numbers on Windows. Letters and digits have the codes of
// 'A' to 'Z' and '0' to '9', on every layout: where a key has no Latin letter, that of the user's other
// layouts counts, so that shortcuts work with Greek or Cyrillic keys too.
namespace key {
inline constexpr std::uint32_t kBackspace = 0x08;
inline constexpr std::uint32_t kTab = 0x09;
inline constexpr std::uint32_t kEnter = 0x0D; // both of them
inline constexpr std::uint32_t kEscape = 0x1B;
inline constexpr std::uint32_t kPageUp = 0x21;
inline constexpr std::uint32_t kPageDown = 0x22;
inline constexpr std::uint32_t kEnd = 0x23;
inline constexpr std::uint32_t kHome = 0x24;
inline constexpr std::uint32_t kLeft = 0x25;
inline constexpr std::uint32_t kUp = 0x26;
inline constexpr std::uint32_t kRight = 0x27;
inline constexpr std::uint32_t kDown = 0x28;
inline constexpr std::uint32_t kInsert = 0x2D;
inline constexpr std::uint32_t kDelete = 0x2E;
inline constexpr std::uint32_t kF1 = 0x70; // to F12, 0x7B
} // namespace key

// One key, or one character of what a sequence of dead keys made. A held key repeats as presses.
struct KeyEvent
{
    std::uint32_t key =
        0; // see above; 0 for a key without a number, and for the further characters of a text
    char32_t character =
        0;               // Unicode; 0 for control characters, with Ctrl or Alt (but not AltGr), in releases
    Modifiers modifiers; // AltGr counts as neither Ctrl nor Alt
};

} // namespace qel::platform
