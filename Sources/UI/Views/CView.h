// The base of every visual element.
#pragma once

#include "CDrawContext.h"
#include "CViewAreaUpdateHandler.h"
#include "CViewBase.h"
#include "CWindowSharedData.h"

namespace qel {

// Tag `ui:view`. A plain view draws nothing and holds others. Subclasses override draw() and take clips
// beyond clip 1, which is the view's whole area, in init() and updateClips().
//
//     opacity                             0 to 1 (default)
//     hint                                one sentence for whoever has the pointer on the view
//     is-tiling-x, is-tiling-y            images are repeated
//     is-decorative                       neither the view nor those in it take the pointer
//     is-click-through                    never takes the pointer itself, the views in it may
//     is-child-click-through              the same for each child that is not intercepting
//     is-intercepting                     takes the pointer for its whole area; the views in it never do
//     is-intercepting-allow-childs        the same, but views in it are asked first
//     is-window-draggable                 a press on it drags the window, see CWinDrag
//     is-focusable, is-debug              for the window
//     cursor                              the pointer's shape on the view: "arrow" (default) or "text"
//     tablet-reach                        in the user's tablet mode, how far beyond itself the view takes the
//                                         pointer where no other control is nearer, pixels at a scale of 1
//
// The window adds the root view's context a window and a surface, resizes the sector map, calls
// announceContentReady(), and then for each frame ticks, solves and paints.
class CView : public CViewBase, public CViewAreaUpdateHandler, public CSectorView
{
public:
    CView();

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;
    void release() override;

    // --- handlers of attributes and events

    virtual CError attrHint();
    virtual CError attrOpacity();
    virtual CError attrIsClickThrough() { return {}; }
    virtual CError eventBlockWindow(const CAttrMap& parameters);
    virtual CError eventUnblockWindow(const CAttrMap& parameters);
    virtual CError eventCloseWindow(const CAttrMap& parameters);
    virtual CError eventPopupToggle(const CAttrMap& parameters);
    // The same when a button goes up: a press that has closed the pop-up does not open it again.
    virtual CError eventPopupToggleCheckRelease(const CAttrMap& parameters);
    virtual CError eventPopupResult(const CAttrMap& parameters);
    virtual CError eventPopupClose(const CAttrMap& parameters);

    CError solveAndAdoptWindowSize() override;

    // On a root view, once its tree is complete and the window is there: the event "content-ready" for all
    // in it. Views that are made later get "window-create" instead.
    CError announceContentReady();

    // --- pointer

    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;

    // The view that takes the pointer at a point of the window, this one or one in it, or null. Of views side
    // by side, that with the higher z-index, then the later one, takes it.
    CView* findViewAt(const CPoint& point);
    // The same for fingers: where that one is no control, the nearest control in this view whose
    // "tablet-reach" extends to the point.
    CView* findTouchedView(const CPoint& point);
    bool isFocusable() const { return isFocusable_; }
    const CString& getHint() const { return hint_; }

    CWindowSharedData& getWindowSharedData() const { return *windowSharedData_; }
    // Both bases have these, and mean the same.
    using CViewBase::getZIndex;
    using CViewBase::isDynamic;

    // --- drawing

    // Draws the view's own content. Called for each sector and, in a cross-fade, for each side, so it must
    // neither allocate nor change what it draws.
    virtual void draw(CDrawContext&) {}

    // --- for the layout and the sector map
    void onAreaBounds(const CRect& visible, const CRect& whole) override;
    CError onAreaSettled() override;
    void selectFadeSide(FadeSide fadeSide) override { selectSide(fadeSide); }
    const CPaletteColor* getSlotColor(std::uint32_t slot) override { return getColor(slot); }
    void drawInto(CDrawContext& context) override { draw(context); }

protected:
    // The area has changed: a subclass sets its clips, after calling the base.
    virtual void updateClips();
    void markLook() override;
    void onFadeMoved() override { setFadePosition(getFade().position); }

    bool isTilingX() const { return isTilingX_; }
    bool isTilingY() const { return isTilingY_; }

    // The clip that all views have, their whole area.
    static constexpr std::size_t kWholeClip = 1;

    // --- for draw(): images by index, in the present range of the image set or in all of it; points and
    // rectangles relative to the view, in pixels; opacities 0 to 1
    void drawImage(CDrawContext& context, std::uint32_t index, bool isInRange, const CPoint& point,
                   std::size_t clip, double opacity, bool tileX, bool tileY) const;
    void drawImageLayer(CDrawContext& context, std::uint32_t index, bool isInRange, std::size_t layer,
                        const CPoint& point, std::size_t clip, double opacity) const;
    void drawFilledRect(CDrawContext& context, std::uint32_t slot, const CRect& rect, std::size_t clip,
                        double opacity) const;
    void drawInvertedRect(CDrawContext& context, const CRect& rect, std::size_t clip) const;
    // Where an image lies in a clip; empty if there is no such image.
    CRect getAlignedImageCoords(std::uint32_t index, bool isInRange, std::size_t clip, CAlignment alignmentH,
                                CAlignment alignmentV) const;

private:
    struct CTouch
    {
        CPoint point;
        CView* nearest = nullptr;
        double distance = 0.0;
    };

    CView* findHit(const CPoint& point, bool isParentClickThrough);
    void findNearest(CTouch& touch);
    // It is `part` or holds it.
    bool holdsView(const CView* part) const;
    bool isAt(const CPoint& point) const;
    CError tellDrag(const char* event, const CAttrMap& parameters);
    CError updateScroller(const char* path);
    static CError tellContentReady(CObject& object);

    CWindowSharedData* windowSharedData_ = nullptr;
    bool isInMap_ = false;

    // Bound attributes.
    double opacity_ = 1.0;
    CString hint_;
    bool isTilingX_ = false;
    bool isTilingY_ = false;
    bool isClickThrough_ = false;
    bool isChildClickThrough_ = false;
    bool isIntercepting_ = false;
    bool isInterceptingAllowChilds_ = false;
    bool isFocusable_ = false;
    bool isWindowDraggable_ = false;
    bool isDebug_ = false;
    double tabletReach_ = 0.0;
};

} // namespace qel
