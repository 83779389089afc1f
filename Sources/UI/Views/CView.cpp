// The base of every visual element.
#include "CView.h"

#include "CViewWindow.h"
#include "ViewTree.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr const char* kWindowBlocker = "window-blocker";
constexpr const char* kWindowBlockerPath = ".window-blocker";
constexpr const char* kWindowBlockerTag = "ui:window-blocker";
constexpr const char* kBlockedBy = "blocked-by";
constexpr const char* kContentReady = "content-ready";
constexpr std::size_t kWholeClip = 1;

bool holds(const CRect& rect, const CPoint& point)
{
    return point.x >= rect.x && point.y >= rect.y && point.x < rect.right() && point.y < rect.bottom();
}

// Within the rectangle.
CPoint nearestPoint(const CRect& rect, const CPoint& point)
{
    constexpr double kInsidePx = 0.5;
    const auto nearest = [=](double position, double begin, double end) {
        return std::clamp(position, begin, std::max(begin, end - kInsidePx));
    };
    return {nearest(point.x, rect.x, rect.right()), nearest(point.y, rect.y, rect.bottom())};
}

} // namespace

void CView::buildClassInfo(CClassInfo& info)
{
    using Self = CView;
    CViewBase::buildClassInfo(info);
    info.bind<&Self::opacity_, &Self::attrOpacity>("opacity", 1.0);
    info.bind<&Self::hint_, &Self::attrHint>("hint", "");
    info.bind<&Self::isTilingX_>("is-tiling-x", false);
    info.bind<&Self::isTilingY_>("is-tiling-y", false);
    info.bind<&Self::isClickThrough_, &Self::attrIsClickThrough>("is-click-through", false);
    info.bind<&Self::isChildClickThrough_>("is-child-click-through", false);
    info.bind<&Self::isIntercepting_>("is-intercepting", false);
    info.bind<&Self::isInterceptingAllowChilds_>("is-intercepting-allow-childs", false);
    info.bind<&Self::isFocusable_>("is-focusable", false);
    info.bind<&Self::isWindowDraggable_>("is-window-draggable", false);
    info.bind<&Self::isDebug_>("is-debug", false);
    info.bind<&Self::tabletReach_>("tablet-reach", 0.0);
    info.handleEvent<&Self::eventBlockWindow>("block-window");
    info.handleEvent<&Self::eventUnblockWindow>("unblock-window");
    info.handleEvent<&Self::eventCloseWindow>("close-window");
    info.handleEvent<&Self::eventPopupToggle>("popup-toggle");
    info.handleEvent<&Self::eventPopupToggleCheckRelease>("popup-toggle-check-release");
    info.handleEvent<&Self::eventPopupResult>("popup-result");
    info.handleEvent<&Self::eventPopupClose>("popup-close");
}

CView::CView()
{
    allocateClips(kWholeClip);
}

CError CView::init()
{
    QEL_TRY(CViewBase::init(), getFullName());
    auto* const root = dynamic_cast<CViewBaseState*>(&getRootView());
    if (!root) {
        QEL_FAIL(getFullName(), "@qelstr_CView_init_NoSectorMap Unable to find sector map.");
    }
    if (!dynamic_cast<CView*>(root)) {
        QEL_FAIL(getFullName(), "@qelstr_CView_init_NoRootView Unable to find root view.");
    }
    QEL_TRY(require(windowSharedData_, CWindowSharedData::kPath,
                    "@qelstr_CView_init_NoSharedData Unable to find window shared data object."),
            getFullName());
    CSectorMap& map = getViewContext().getSectorMap();
    map.setViewZIndex(*this, CViewBase::getZIndex());
    map.setViewDynamic(*this, CViewBase::isDynamic());
    map.addView(*this);
    isInMap_ = true;
    return {};
}

CError CView::initChilds()
{
    QEL_TRY(CViewBase::initChilds(), getFullName());
    return getViewContext().isContentReady() ? receiveEvent("window-create", {}) : CError();
}

void CView::release()
{
    if (isInMap_) {
        if (isRootView()) {
            if (CError error = fireEvent("window-destroy", {})) {
                traceError(error);
            }
        }
        if (CViewWindow* const window = getWindow()) {
            window->forgetView(*this);
        }
        getViewContext().getSectorMap().removeView(*this);
        isInMap_ = false;
    }
    CViewBase::release();
}

CError CView::announceContentReady()
{
    getViewContext().setContentReady();
    return tellContentReady(*this);
}

CError CView::tellContentReady(CObject& object)
{
    const CHold hold(object);
    CError first = sendEvent(object, kContentReady, {});
    std::vector<CObject*> children;
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        children.push_back(object.getChild(i));
    }
    for (CObject* const child : children) {
        bool isThere = false;
        for (std::size_t i = 0; i < object.getChildCount() && !isThere; ++i) {
            isThere = object.getChild(i) == child;
        }
        if (isThere) {
            CError error = tellContentReady(*child);
            if (!first) {
                first = std::move(error);
            }
        }
    }
    return first;
}

// --- attributes and events

CError CView::attrOpacity()
{
    setDrawOpacity(std::clamp(opacity_, 0.0, 1.0));
    markLook();
    return {};
}

CError CView::attrHint()
{
    CViewWindow* const window = isInMap_ ? getWindow() : nullptr;
    return window ? window->onHintChanged(*this) : CError();
}

CError CView::solveAndAdoptWindowSize()
{
    QEL_TRY(CViewBase::solveAndAdoptWindowSize(), getFullName());
    CViewWindow* const window = getWindow();
    return window ? window->adoptRootSize() : CError();
}

CError CView::eventBlockWindow(const CAttrMap&)
{
    CViewBasePlacement& root = getRootView();
    CObject* blocker = root.findObject(kWindowBlockerPath);
    const bool isNew = !blocker;
    if (isNew) {
        QEL_TRY(root.createChild(blocker, kWindowBlockerTag, kWindowBlocker), getFullName());
    }
    QEL_TRY(blocker->setAttribute(kBlockedBy, getFullName(), true), getFullName());
    CViewWindow* const window = getWindow();
    return isNew && window ? window->exitPointer() : CError();
}

CError CView::eventUnblockWindow(const CAttrMap&)
{
    releaseObject(getRootView().findObject(kWindowBlockerPath));
    return {};
}

CError CView::eventCloseWindow(const CAttrMap&)
{
    CViewWindow* const window = getWindow();
    return window ? window->closeWindow() : CError();
}

CError CView::eventPopupToggle(const CAttrMap& parameters)
{
    CViewWindow* const window = getWindow();
    return window ? window->togglePopup(*this, parameters) : CError();
}

CError CView::eventPopupResult(const CAttrMap& parameters)
{
    CViewWindow* const window = getWindow();
    return window ? window->passPopupResult(*this, parameters) : CError();
}

CError CView::eventPopupToggleCheckRelease(const CAttrMap& parameters)
{
    return eventPopupToggle(parameters);
}

CError CView::eventPopupClose(const CAttrMap&)
{
    CViewWindow* const window = getWindow();
    return window ? window->closePopup(*this) : CError();
}

// --- pointer

CError CView::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CViewBase::onMousePress(parameters), getFullName());
    return tellDrag("window-drag-press", parameters);
}

CError CView::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CViewBase::onMouseMove(parameters), getFullName());
    return tellDrag("window-drag-move", parameters);
}

CError CView::onMouseRelease(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CViewBase::onMouseRelease(parameters), getFullName());
    return tellDrag("window-drag-release", parameters);
}

CError CView::onMouseCancel(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CViewBase::onMouseCancel(parameters), getFullName());
    return tellDrag("window-drag-release", parameters);
}

CError CView::tellDrag(const char* event, const CAttrMap& parameters)
{
    return isWindowDraggable_ && !isReleased() ? sendEvent(getRootView(), event, parameters) : CError();
}

bool CView::isAt(const CPoint& point) const
{
    return holds(getArea(), point) && holds(getVisibleArea(), point);
}

CView* CView::findViewAt(const CPoint& point)
{
    return findHit(point, false);
}

// Views in this one are asked wherever the point is: some leave the rectangle of their parent, and each is
// cut to where it shows.
CView* CView::findHit(const CPoint& point, bool isParentClickThrough)
{
    if (isReleased() || isDecorative() || !getViewArea().isVisible()) {
        return nullptr;
    }
    const bool takesAll = isIntercepting_ && !isInterceptingAllowChilds_;
    CView* best = nullptr;
    for (CView* const child : takesAll ? std::vector<CView*>() : viewsBelow<CView>(*this)) {
        CView* const hit = child->findHit(point, isChildClickThrough_);
        if (hit && (!best || hit->getZIndex() >= best->getZIndex())) {
            best = hit;
        }
    }
    if (best) {
        return best;
    }
    const bool isPassedOver = isParentClickThrough && !isIntercepting_ && !isInterceptingAllowChilds_;
    return isClickThrough_ || isPassedOver || !isAt(point) ? nullptr : this;
}

bool CView::holdsView(const CView* part) const
{
    const CViewBasePlacement* view = part;
    while (view && view != this) {
        view = view->getParentView();
    }
    return view != nullptr;
}

CView* CView::findTouchedView(const CPoint& point)
{
    CView* const hit = findViewAt(point);
    for (const CView* view = hit; view; view = dynamic_cast<const CView*>(view->getParentView())) {
        if (view->tabletReach_ > 0.0) {
            return hit;
        }
    }
    CTouch touch{point};
    for (CView* const child : viewsBelow<CView>(*this)) {
        child->findNearest(touch);
    }
    if (!touch.nearest) {
        return hit;
    }
    // What lies behind something else is out of reach.
    const CRect& area = touch.nearest->getVisibleArea();
    CView* const inside = findViewAt(nearestPoint(area, point));
    return touch.nearest->holdsView(inside) ? inside : hit;
}

void CView::findNearest(CTouch& touch)
{
    if (isReleased() || isDecorative() || !getViewArea().isVisible()) {
        return;
    }
    if (tabletReach_ > 0.0 && !actsDisabled() && !getVisibleArea().isEmpty()) {
        const CPoint nearest = nearestPoint(getVisibleArea(), touch.point);
        const double distance = std::hypot(nearest.x - touch.point.x, nearest.y - touch.point.y);
        const bool isInReach = distance <= tabletReach_ * getInterfaceScale();
        if (isInReach && (!touch.nearest || distance < touch.distance)) {
            touch.nearest = this;
            touch.distance = distance;
        }
    }
    for (CView* const child : viewsBelow<CView>(*this)) {
        child->findNearest(touch);
    }
}

// --- layout

void CView::onAreaBounds(const CRect& visible, const CRect&)
{
    if (isInMap_) {
        // What is drawn lies in the view itself, however far it scrolls what is in it.
        getViewContext().getSectorMap().moveView(*this, getViewArea().getRect(), visible);
        updateClips();
    }
}

void CView::updateClips()
{
    setClip(kWholeClip, getArea());
}

CError CView::onAreaSettled()
{
    if (isReleased()) {
        return {};
    }
    const CHold hold(*this);
    if (isScrollable()) {
        QEL_TRY(updateScroller(".scroller-h.bar"), getFullName());
        QEL_TRY(isReleased() ? CError() : updateScroller(".scroller-v.bar"), getFullName());
    }
    return isReleased() ? CError() : notify("view-area-update", {}, false);
}

CError CView::updateScroller(const char* path)
{
    CObject* const bar = findObject(path);
    return bar ? sendEvent(*bar, "update-scroller", {}) : CError();
}

// --- drawing

void CView::markLook()
{
    if (isInMap_) {
        getViewContext().getSectorMap().markView(*this);
    }
}

void CView::drawImage(CDrawContext& context, std::uint32_t index, bool isInRange, const CPoint& point,
                      std::size_t clip, double opacity, bool tileX, bool tileY) const
{
    context.drawImage(findImage(index, isInRange), point, clip, opacity, tileX, tileY);
}

void CView::drawImageLayer(CDrawContext& context, std::uint32_t index, bool isInRange, std::size_t layer,
                           const CPoint& point, std::size_t clip, double opacity) const
{
    context.drawImageLayer(findImage(index, isInRange), layer, point, clip, opacity);
}

void CView::drawFilledRect(CDrawContext& context, std::uint32_t slot, const CRect& rect, std::size_t clip,
                           double opacity) const
{
    context.drawFilledRect(slot, rect, clip, opacity);
}

void CView::drawInvertedRect(CDrawContext& context, const CRect& rect, std::size_t clip) const
{
    context.drawInvertedRect(rect, clip);
}

CRect CView::getAlignedImageCoords(std::uint32_t index, bool isInRange, std::size_t clip,
                                   CAlignment alignmentH, CAlignment alignmentV) const
{
    const CImage* const image = findImage(index, isInRange);
    return image ? alignInClip(*this, clip, image->getWidth(), image->getHeight(),
                               static_cast<std::int32_t>(alignmentH), static_cast<std::int32_t>(alignmentV))
                 : CRect();
}

} // namespace qel
