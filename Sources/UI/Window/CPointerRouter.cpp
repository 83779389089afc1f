// Which view hears of the pointer.
#include "CPointerRouter.h"

#include "CViewCommand.h"
#include "PointerParameters.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace qel {

namespace {

CView* parentOf(const CView* view)
{
    return dynamic_cast<CView*>(view->getParentView());
}

} // namespace

CView* CPointerRouter::viewAt(const CPoint& point) const
{
    if (!root_) {
        return nullptr;
    }
    return settings_ && settings_->isTabletMode() ? root_->findTouchedView(point) : root_->findViewAt(point);
}

CPointerRouter::Chain CPointerRouter::chainTo(CView* view)
{
    Chain chain;
    for (; view; view = parentOf(view)) {
        chain.push_back(view);
    }
    std::ranges::reverse(chain);
    return chain;
}

bool CPointerRouter::isWithin(const CView* view, const CView* ancestor)
{
    while (view && view != ancestor) {
        view = parentOf(view);
    }
    return view != nullptr;
}

// --- enter and exit

CError CPointerRouter::enter(CView* view)
{
    // While a view is held, what lies beside it is not entered.
    const CView* const held = captured();
    while (view && held && !isWithin(view, held) && !isWithin(held, view)) {
        view = parentOf(view);
    }
    if (view == getTop()) {
        return {};
    }
    CError first;
    // What is left and not yet told, and what is still to be entered: handlers may release any of them.
    const Chain old = chain_;
    const Chain now = chainTo(view);
    std::deque<CObject::CHold> holds;
    for (const Chain* chain : {&old, &now}) {
        for (CView* const each : *chain) {
            holds.emplace_back(*each);
        }
    }
    const std::size_t common = static_cast<std::size_t>(std::ranges::mismatch(old, now).in1 - old.begin());
    chain_.resize(common);
    if (!old.empty() && !old.back()->isReleased() && !old.back()->actsDisabled()) {
        collectError(first, old.back()->receiveEvent("mouse-top-exit", {}));
    }
    for (std::size_t i = old.size(); i-- > common;) {
        if (!old[i]->isReleased()) {
            collectError(first, old[i]->onMouseExit({}));
        }
    }
    for (std::size_t i = common; i < now.size(); ++i) {
        const bool isNext = chain_.size() == i && (i == 0 || chain_.back() == now[i - 1]);
        if (!isNext || now[i]->isReleased()) {
            break; // a handler has moved the pointer's views itself, or ended one of these
        }
        chain_.push_back(now[i]);
        collectError(first, now[i]->onMouseEnter({}));
    }
    return first;
}

CError CPointerRouter::leave()
{
    isInside_ = false;
    return enter(nullptr);
}

CError CPointerRouter::refresh()
{
    return isInside_ ? enter(viewAt(point_)) : CError();
}

// --- the pointer

CError CPointerRouter::move(const platform::PointerEvent& event)
{
    point_ = {static_cast<double>(event.x), static_cast<double>(event.y)};
    isInside_ = true;
    CView* const held = captured();
    CError first;
    if (CView* const target = held ? held : viewAt(point_)) {
        collectError(first, target->onMouseMove(moveParameters(event)));
    }
    collectError(first, enter(viewAt(point_)));
    return first;
}

CError CPointerRouter::press(const platform::ButtonEvent& event)
{
    if (event.button == platform::MouseButton::kMiddle) {
        return {};
    }
    point_ = {static_cast<double>(event.x), static_cast<double>(event.y)};
    isInside_ = true;
    CError first;
    // A tap of a pen comes without a move before it.
    collectError(first, refresh());
    CView* const target = captured() ? captured() : viewAt(point_);
    if (!target) {
        return first;
    }
    const CAttrMap parameters = buttonParameters(event);
    if (event.button == platform::MouseButton::kLeft) {
        pressed_[kLeft] = target;
        collectError(first, target->onMousePress(parameters));
    } else {
        pressed_[kRight] = target;
        collectError(first, target->onMousePressR(parameters));
    }
    return first;
}

CError CPointerRouter::release(const platform::ButtonEvent& event)
{
    if (event.button == platform::MouseButton::kMiddle) {
        return {};
    }
    point_ = {static_cast<double>(event.x), static_cast<double>(event.y)};
    const bool isLeft = event.button == platform::MouseButton::kLeft;
    CView* const view = std::exchange(pressed_[isLeft ? kLeft : kRight], nullptr);
    CError first;
    if (view) {
        const CAttrMap parameters = buttonParameters(event);
        if (isWithin(viewAt(point_), view)) {
            collectError(first,
                         isLeft ? view->onMouseRelease(parameters) : view->onMouseReleaseR(parameters));
        } else {
            collectError(first, isLeft ? view->onMouseCancel(parameters) : view->onMouseCancelR(parameters));
        }
    }
    if (!isButtonHeld()) {
        collectError(first, refresh());
    }
    return first;
}

CError CPointerRouter::cancelPresses()
{
    CError first;
    if (CView* const view = std::exchange(pressed_[kLeft], nullptr)) {
        collectError(first, view->onMouseCancel({}));
    }
    if (CView* const view = std::exchange(pressed_[kRight], nullptr)) {
        collectError(first, view->onMouseCancelR({}));
    }
    collectError(first, refresh());
    return first;
}

CError CPointerRouter::wheel(const platform::WheelEvent& event)
{
    static const CString kWheel = "mouse-wheel";
    CView* view = viewAt({static_cast<double>(event.x), static_cast<double>(event.y)});
    while (view && !view->handlesEvent(kWheel)) {
        view = parentOf(view);
    }
    return view && !view->actsDisabled() ? view->receiveEvent(kWheel, wheelParameters(event)) : CError();
}

// --- views that go

void CPointerRouter::forgetView(const CView& view)
{
    if (const auto found = std::ranges::find(chain_, &view); found != chain_.end()) {
        chain_.erase(found, chain_.end());
    }
    std::ranges::replace(pressed_, &view, static_cast<CView*>(nullptr));
    if (root_ == &view) {
        root_ = nullptr;
        chain_.clear();
    }
}

} // namespace qel
