// Where a window opens on the screen.
#pragma once

#include "CError.h"
#include "SystemEvents.h"

namespace qel {

// All that decides on the place of a window, in pixels of the screen. Fill it in, then ask.
//
//     center               in the middle of the opener's window, or of the work area without one
//     center-overlay       over the middle of the opener, and at least as large
//     cursor               with its corner at the pointer
//     bottom               under the opener, left edges together
//     bottom-center        under the opener, in the middle of the opener's window
//     bottom-local-center  under the opener, in the middle of the opener
//     left, right          beside the opener, top edges together; on the other side if there is room only
//                          there
//     opener               at `windowX`, `windowY`
class CWindowPlacement
{
public:
    enum class Alignment
    {
        kCenter,
        kCenterOverlay,
        kCursor,
        kBottom,
        kBottomCenter,
        kBottomLocalCenter,
        kLeft,
        kRight,
        kOpener,
    };

    // Of the attribute "window-alignment"; empty is "center". Another word fails.
    static CError parse(const CString& context, const CString& text, Alignment& out);

    // Moves a window by as little as brings all of it into the area; of one that is larger, the top left
    // corner shows.
    static platform::PixelRect keepInside(const platform::PixelRect& window, const platform::PixelRect& area);

    // The place of a window of this size: by its alignment and shift, kept in the work area, not above
    // `lowestY`.
    platform::PixelRect place(Alignment alignment, int width, int height) const;

    platform::PixelRect workArea;
    platform::PixelRect openerWindow; // empty for none
    platform::PixelRect opener;       // the view; empty for none: then the window stands for it
    int pointerX = 0;
    int pointerY = 0;
    int windowX = 0;
    int windowY = 0;
    int shiftX = 0;
    int shiftY = 0;
    // A window that would reach below the screen is moved up to here, and not further; negative: no limit.
    int lowestY = -1;

private:
    platform::PixelRect align(Alignment alignment, int width, int height) const;
    bool fitsAcross(int x, int width) const;
};

} // namespace qel
