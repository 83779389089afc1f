// Where a window opens on the screen.
#include "CWindowPlacement.h"

#include <algorithm>
#include <array>

namespace qel {

namespace {

using Alignment = CWindowPlacement::Alignment;
using platform::PixelRect;

struct Name
{
    const char* text;
    Alignment alignment;
};
constexpr std::array kNames = {
    Name{"center", Alignment::kCenter},
    Name{"center-overlay", Alignment::kCenterOverlay},
    Name{"cursor", Alignment::kCursor},
    Name{"bottom", Alignment::kBottom},
    Name{"bottom-center", Alignment::kBottomCenter},
    Name{"bottom-local-center", Alignment::kBottomLocalCenter},
    Name{"left", Alignment::kLeft},
    Name{"right", Alignment::kRight},
    Name{"opener", Alignment::kOpener},
};

int centered(int start, int length, int inner)
{
    return start + (length - inner) / 2;
}

PixelRect centeredIn(const PixelRect& outer, int width, int height)
{
    return {centered(outer.x, outer.width, width), centered(outer.y, outer.height, height), width, height};
}

} // namespace

CError CWindowPlacement::parse(const CString& context, const CString& text, Alignment& out)
{
    out = Alignment::kCenter;
    if (text.isEmpty()) {
        return {};
    }
    const auto* const name =
        std::find_if(kNames.begin(), kNames.end(), [&](const Name& each) { return text == each.text; });
    if (name == kNames.end()) {
        QEL_FAIL(context, "@qelstr_CWindow_createWindow_InvalidAlignment Invalid window alignment '%1'",
                 text);
    }
    out = name->alignment;
    return {};
}

PixelRect CWindowPlacement::keepInside(const PixelRect& window, const PixelRect& area)
{
    PixelRect moved = window;
    moved.x = std::max(std::min(window.x, area.x + area.width - window.width), area.x);
    moved.y = std::max(std::min(window.y, area.y + area.height - window.height), area.y);
    return moved;
}

PixelRect CWindowPlacement::place(Alignment alignment, int width, int height) const
{
    PixelRect window = align(alignment, width, height);
    window.x += shiftX;
    window.y += shiftY;
    if (!workArea.isEmpty()) {
        window = keepInside(window, workArea);
    }
    if (lowestY >= 0) {
        window.y = std::max(window.y, lowestY);
    }
    return window;
}

PixelRect CWindowPlacement::align(Alignment alignment, int width, int height) const
{
    const PixelRect& frame = openerWindow.isEmpty() ? workArea : openerWindow;
    const PixelRect& view = opener.isEmpty() ? frame : opener;
    const int below = view.y + view.height;
    const int leftOf = view.x - width;
    const int rightOf = view.x + view.width;
    switch (alignment) {
    case Alignment::kCenterOverlay:
        return centeredIn(view, std::max(width, view.width), std::max(height, view.height));
    case Alignment::kCursor:
        return {pointerX, pointerY, width, height};
    case Alignment::kBottom:
        return {view.x, below, width, height};
    case Alignment::kBottomCenter:
        return {centered(frame.x, frame.width, width), below, width, height};
    case Alignment::kBottomLocalCenter:
        return {centered(view.x, view.width, width), below, width, height};
    case Alignment::kLeft:
        return {fitsAcross(leftOf, width) || !fitsAcross(rightOf, width) ? leftOf : rightOf, view.y, width,
                height};
    case Alignment::kRight:
        return {fitsAcross(rightOf, width) || !fitsAcross(leftOf, width) ? rightOf : leftOf, view.y, width,
                height};
    case Alignment::kOpener:
        return {windowX, windowY, width, height};
    case Alignment::kCenter:
        break;
    }
    return centeredIn(frame, width, height);
}

// Is there room for a window from `x` to the right?
bool CWindowPlacement::fitsAcross(int x, int width) const
{
    return workArea.isEmpty() || (x >= workArea.x && x + width <= workArea.x + workArea.width);
}

} // namespace qel
