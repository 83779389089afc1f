// A line that moves to show its ends.
#include "CTextViewAutoScroll.h"

#include "CTimer.h"
#include "EventParameters.h"

namespace qel {

namespace {

constexpr const char* kTimer = "auto-scroll-timer";
constexpr const char* kTick = "auto-scroll-tick";
constexpr const char* kNoArrows =
    "@qelstr_CTextViewAutoScroll_initChilds_NoArrows Unable to find auto-scroll "
    "arrows";
constexpr double kMinFps = 1.0;

} // namespace

void CTextViewAutoScroll::buildClassInfo(CClassInfo& info)
{
    using Self = CTextViewAutoScroll;
    CTextView::buildClassInfo(info);
    info.bind<&Self::fps_>("auto-scroll-fps", 30.0);
    info.bind<&Self::speed_>("auto-scroll-speed", 60.0);
    info.handleEvent<&Self::eventTick>(kTick);
}

CError CTextViewAutoScroll::initChilds()
{
    QEL_TRY(CTextView::initChilds(), getFullName());
    QEL_TRY(require(arrowLeft_, ".auto-scroll-arrow-left", kNoArrows), getFullName());
    QEL_TRY(require(arrowRight_, ".auto-scroll-arrow-right", kNoArrows), getFullName());
    showArrows();
    return {};
}

// --- places

double CTextViewAutoScroll::mostOffset() const
{
    const double beyond = getText().getWidth() - getTextBox().width;
    return beyond > 0.0 && getTextBox().width > 0.0 ? beyond / getText().getWidth() : 0.0;
}

double CTextViewAutoScroll::getTextShiftX() const
{
    return std::clamp(getAttrReal("offset-x"), 0.0, mostOffset()) * getText().getWidth();
}

CError CTextViewAutoScroll::setOffset(double offset)
{
    const double allowed = std::clamp(offset, 0.0, mostOffset());
    if (allowed != getAttrReal("offset-x")) {
        QEL_TRY(setAttribute("offset-x", CAttrValue(allowed), true), getFullName());
        showArrows();
    }
    return {};
}

void CTextViewAutoScroll::onTextLaidOut()
{
    CTextView::onTextLaidOut();
    showArrows();
}

void CTextViewAutoScroll::showArrows()
{
    const double offset = std::clamp(getAttrReal("offset-x"), 0.0, mostOffset());
    const auto show = [](CView* arrow, bool isShown) {
        if (arrow && arrow->getAttrBool("is-visible", true) != isShown) {
            if (CError error = arrow->setAttribute("is-visible", CAttrValue(isShown), true)) {
                traceError(error);
            }
        }
    };
    show(arrowLeft_, offset > 0.0);
    show(arrowRight_, offset < mostOffset());
}

// --- movement

void CTextViewAutoScroll::startTimer()
{
    if (mostOffset() <= 0.0 || findChild(kTimer)) {
        return;
    }
    // In a tree without a loop the text stays where it is.
    CTimer* timer = nullptr;
    const CAttrMap attributes = {{"interval", CAttrValue(1.0 / std::max(kMinFps, fps_))}};
    releaseError(createChild(timer, "core:timer", kTimer, false, nullptr, &attributes));
    if (timer) {
        listenObject(timer->getFullName(), "tick", kTick);
    }
}

void CTextViewAutoScroll::stopTimer()
{
    if (CObject* const timer = findChild(kTimer)) {
        unlistenObject(timer->getFullName(), "tick", kTick);
        releaseObject(timer);
    }
}

CError CTextViewAutoScroll::eventTick(const CAttrMap&)
{
    if (!isPointedAt_ || actsDisabled() || getText().getWidth() <= 0) {
        return {};
    }
    const double step = speed_ / std::max(kMinFps, fps_) * getInterfaceScale() / getText().getWidth();
    return setOffset(getAttrReal("offset-x") + (isForward_ ? step : -step));
}

CError CTextViewAutoScroll::onMouseEnter(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextView::onMouseEnter(parameters), getFullName());
    if (!isReleased()) {
        isPointedAt_ = true;
        startTimer();
    }
    return {};
}

CError CTextViewAutoScroll::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextView::onMouseMove(parameters), getFullName());
    if (!isReleased()) {
        isForward_ = eventNumber(parameters, "x") - getArea().x >= getArea().width * 0.5;
        startTimer();
    }
    return {};
}

CError CTextViewAutoScroll::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextView::onMouseExit(parameters), getFullName());
    isPointedAt_ = false;
    if (isReleased()) {
        return {};
    }
    stopTimer();
    return setOffset(0.0);
}

} // namespace qel
