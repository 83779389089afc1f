// The root of a window.
#include "CWinDrag.h"

#include "CWindow.h"

namespace qel {

namespace {

class CWindowDrag : public CDragInfo
{
public:
    CWindowDrag(CWindow& window, double pointerX, double pointerY)
        : CDragInfo(pointerX, pointerY), window_(window), start_(window.getScreenPlace())
    {}

protected:
    CError moveBy(double deltaX, double deltaY) override
    {
        window_.moveTo(start_.x + roundToPixel(deltaX), start_.y + roundToPixel(deltaY));
        return {};
    }

private:
    CWindow& window_;
    platform::PixelRect start_;
};

// Where a pointer event happened, pixels of the screen; false if it does not tell.
bool readPointer(const CAttrMap& parameters, CPoint& out)
{
    const auto x = parameters.find("actual-x");
    const auto y = parameters.find("actual-y");
    if (x == parameters.end() || y == parameters.end()) {
        return false;
    }
    out = {x->second.toReal().value_or(0.0), y->second.toReal().value_or(0.0)};
    return true;
}

} // namespace

void CWinDrag::buildClassInfo(CClassInfo& info)
{
    using Self = CWinDrag;
    CFramedView::buildClassInfo(info);
    info.handleEvent<&Self::eventDragPress>("window-drag-press");
    info.handleEvent<&Self::eventDragMove>("window-drag-move");
    info.handleEvent<&Self::eventDragRelease>("window-drag-release");
    info.handleEvent<&Self::eventConstrainWindow>("constrain-window");
}

// --- dragging

CWindow* CWinDrag::movableWindow() const
{
    auto* const window = dynamic_cast<CWindow*>(getWindow());
    return window && window->isOpen() && !window->isMainWindow() ? window : nullptr;
}

CError CWinDrag::eventDragPress(const CAttrMap& parameters)
{
    CPoint pointer;
    CWindow* const window = movableWindow();
    if (window && readPointer(parameters, pointer)) {
        drag_ = std::make_unique<CWindowDrag>(*window, pointer.x, pointer.y);
    }
    return {};
}

CError CWinDrag::eventDragMove(const CAttrMap& parameters)
{
    CPoint pointer;
    return drag_ && movableWindow() && readPointer(parameters, pointer) ? drag_->dragTo(pointer.x, pointer.y)
                                                                        : CError();
}

CError CWinDrag::eventDragRelease(const CAttrMap&)
{
    if (!drag_) {
        return {};
    }
    drag_.reset();
    return receiveEvent("constrain-window", {});
}

CError CWinDrag::eventConstrainWindow(const CAttrMap&)
{
    if (CWindow* const window = movableWindow()) {
        const platform::PixelRect place = window->getScreenPlace();
        const platform::PixelRect kept =
            CWindowPlacement::keepInside(place, window->getSystem().getWorkArea(place));
        if (kept != place) {
            window->moveTo(kept.x, kept.y);
        }
    }
    return {};
}

} // namespace qel
