// The texts of placement attributes, read into numbers.
#pragma once

#include "CString.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qel {

enum class CAxis : std::uint8_t
{
    kX,
    kY
};
constexpr CAxis kAxes[] = {CAxis::kX, CAxis::kY};
// Its place in a pair.
constexpr std::size_t indexOf(CAxis axis)
{
    return static_cast<std::size_t>(axis);
}
constexpr CAxis otherAxis(CAxis axis)
{
    return axis == CAxis::kX ? CAxis::kY : CAxis::kX;
}

enum class CPlacement : std::uint8_t
{
    kInline = 1, // flows in rows, in what docking leaves
    kFull,       // takes the remaining box
    kTop,        // docks to a side of the remaining box
    kBottom,
    kLeft,
    kRight,
    kOverlay,       // lies over the parent's box
    kWindowOverlay, // lies over the root view
    kMatch,         // lies over another view
    kScrollerH,     // bars of a scrollable parent, and the piece where they would meet
    kScrollerV,
    kScrollerP
};

enum class CAlignment : std::int8_t
{
    kStart = -1, // left or top
    kCenter = 0,
    kEnd = 1 // right or bottom
};

// How wide or high a view is to be.
struct CViewSize
{
    enum class Form : std::uint8_t
    {
        kNumber,   // `value` window pixels
        kShare,    // `value` times the share, 0 to 1; "full" is 1
        kBalanced, // the share divided among the siblings
        kCompact   // as the content is
    };
    Form form = Form::kCompact;
    double value = 0.0;
};

// Window pixels.
struct CViewBorder
{
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;

    double before(CAxis axis) const { return axis == CAxis::kX ? left : top; }
    double after(CAxis axis) const { return axis == CAxis::kX ? right : bottom; }
};

// Numbers in texts are pixels at a scale of 1; what is read is multiplied by `scale`. A bad number is 0.

double parsePixels(const CString& text, double scale);
// "compact", "full", "balanced", a number, or a percentage ending in "%", held within 0 and 100.
CViewSize parseViewSize(const CString& text, double scale);
// The same for a lower bound, which has no "full".
CViewSize parseMinSize(const CString& text, double scale);

// Tokens between blanks, one after another: flags, then a number. "L", "T", "R", "B" choose sides, all four
// without them; "*" adds to the side instead of replacing it. All sides start at 0: "B3" is a bottom of 3,
// "*LT1 *RB-1" shifts the content by one pixel. Each number is rounded to a whole pixel if `isRounded`,
// halves away from zero. Bad tokens are traced, with `context`, and count as 0.
CViewBorder parseBorder(const CString& text, double scale, bool isRounded, const CString& context);

// By name; nothing for an unknown one.
std::optional<CPlacement> parsePlacement(const CString& text);
// "left", "center", "right" along x; "top", "center", "bottom" along y.
std::optional<CAlignment> parseAlignment(const CString& text, CAxis axis);

} // namespace qel
