// A scroll bar.
#pragma once

#include "CScrolledView.h"
#include "ScrollerParts.h"

namespace qel {

// Tag `ui:scroller-bar`. Shows which part of a view's content is seen ("ratio-x", "offset-x" of that view, or
// "-y"), and moves it: by the bar, the buttons at its ends, presses on the track, which turn a page, and the
// wheel over the view. The right button moves both axes at once. Where all is seen the bar unsets its state
// "shown", draws nothing and takes no presses; the room for it stays.
//
//     scrolled-view          path of the view; by default the nearest one above that scrolls
//     is-vertical            along "-y"; otherwise along "-x"
//     is-pan                 no bar but a handle that moves both axes
//     scroll-fps             steps a second while a button is held, 20 by default
//     is-resizeable          the ends of the bar can be dragged, which changes the ratio; then it stays when
//                            all is seen
//     is-snapshots-enabled   a double click on such a bar shows all, the next one what was shown before
//     is-show-real-range     the bar may be shorter than its pictures need
//
// The images are the ranges of the scroller's set: "HBase", "HBar" (five pieces), "HButtonPrev",
// "HButtonNext", the same with "V", "Pan", and each but the first two with "Pushed". The bar is painted in
// the colours of slots 0 and 1, which the states "Hover" (the pointer is on the bar), "Edge" (on an end that
// can be dragged) and "Hilite" (the bar is held) may change.
//
// Takes the events "update-scroller", from the view when its layout has changed, "scroll-start" ("delta": the
// part of the content to move by, again and again), "scroll-stop", "scroll-wheel" (as "mouse-wheel").
class CScrollerBar : public CView
{
public:
    CScrollerBar();

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMousePressR(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseReleaseR(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;
    CError onMouseCancelR(const CAttrMap& parameters) override;

    virtual CError eventUpdateScroller(const CAttrMap& parameters);
    virtual CError eventScrollStart(const CAttrMap& parameters);
    virtual CError eventScrollStop(const CAttrMap& parameters);
    virtual CError eventScrollWheel(const CAttrMap& parameters);

    void draw(CDrawContext& context) override;

protected:
    void updateClips() override;
    void onLookChanged() override;

private:
    enum class Part
    {
        kNone,
        kPrev,
        kNext,
        kTrack,
        kBar,
        kStartEdge, // of a bar that can be resized
        kEndEdge,
        kPan // both axes, by the right button or a handle
    };
    // Ids of the images.
    struct Images
    {
        std::uint32_t base = 0;
        std::uint32_t bar = 0;
        std::uint32_t buttons[4] = {}; // previous, next; each free, pushed
        std::uint32_t pan[2] = {};
    };

    CError onContentReady(const CAttrMap& parameters);
    CError listenWheel();
    CAxis axis() const { return isVertical_ ? CAxis::kY : CAxis::kX; }
    double lengthOf(const CRect& rect) const { return isVertical_ ? rect.height : rect.width; }
    // Along the axis, from the view's corner.
    double placeOf(const CPoint& point) const { return isVertical_ ? point.y : point.x; }
    Part partAt(const CPoint& point) const;
    bool isActive() const { return isShown_ && !isReleased() && !actsDisabled(); }

    CError hold(Part part, const CPoint& point);
    CError letGo();
    CError drag(const CPoint& point);
    CError dragEdge(double distancePx);
    CError dragBoth(const CPoint& point);
    CError toggleSnapshot();
    CError markParts(Part under);
    CError scrollBy(double delta);
    void onScrollTick();
    // Reads ratio and offset anew.
    void update();
    void layOut();

    double imageLength(std::uint32_t id) const;
    void drawPart(CDrawContext& context, std::uint32_t id, const CPoint& point, std::size_t clip,
                  const CPaletteColor* const (&colors)[2], bool isTiling) const;
    void drawBar(CDrawContext& context);
    const CPaletteColor* plainColor(const CString& name);

    CScrolledView scrolled_{*this, scrolledPath_};
    Images images_;
    double ratio_ = 1.0;
    double offset_ = 0.0;
    ScrollerParts parts_;
    bool isShown_ = false;

    Part held_ = Part::kNone;
    bool isOverHeld_ = false; // a held button works only while the pointer is on it
    CPoint pressPoint_;
    double pressOffset_[2] = {};
    double pressRatio_ = 1.0;
    ScrollerParts pressParts_;
    double snapshotRatio_ = 1.0; // what the next double click shows
    double snapshotOffset_ = 0.0;

    CTickSubscription scrollTick_;
    double scrollDelta_ = 0.0;
    double nextScrollSec_ = 0.0;

    // Bound attributes.
    CString scrolledPath_;
    bool isVertical_ = false;
    bool isPan_ = false;
    double scrollFps_ = 20.0;
    bool isResizeable_ = false;
    bool isSnapshotsEnabled_ = false;
    bool isShowRealRange_ = false;
};

} // namespace qel
