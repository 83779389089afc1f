// The rotary control.
#include "CKnob.h"

#include "CAudioParamInfo.h"
#include "CColorSwatch.h"
#include "CGlobalSettings.h"
#include "CUIParamController.h"
#include "ControlChildren.h"
#include "EventParameters.h"
#include "NumberSyntax.h"

#include <cmath>

namespace qel {

namespace {

constexpr const char* kDragged = "dragged";
constexpr const char* kReadOutPath = ".readout";
constexpr const char* kLabelsPath = ".knob-labels";
constexpr const char* kHover = "hover";

constexpr std::int32_t kLastPicture = 84;
constexpr std::size_t kBodyLayer = 0;
constexpr std::size_t kArcLayer = 1;
constexpr std::size_t kMiddleArcLayer = 2;

} // namespace

void CKnob::buildClassInfo(CClassInfo& info)
{
    using Self = CKnob;
    constexpr CKnobZone kZone;
    CView::buildClassInfo(info);
    info.bind<&Self::centerX_>("center-x", -1.0);
    info.bind<&Self::centerY_>("center-y", -1.0);
    info.bind<&Self::zoneStart_>("zone-start", kZone.start);
    info.bind<&Self::zoneEnd_>("zone-end", kZone.end);
    info.bind<&Self::innerRadius_>("inner-radius", 0.0);
    info.bind<&Self::outerRadius_>("outer-radius", 0.0);
    info.bind<&Self::tabletOuterRadius_>("tablet-outer-radius", 0.0);
    info.bind<&Self::linkedKnob_>("linked-knob", "");
    info.bind<&Self::isLinkInversed_>("is-link-inversed", false);
    info.bind<&Self::isAxisZero_>("is-axis-zero", std::nullopt);
    info.bind<&Self::updateFps_>("update-fps", 0.0);
    info.bind<&Self::colorSwatch_, &Self::attrColorIndex>("color-swatch", "");
    info.bind<&Self::colorIndex_, &Self::attrColorIndex>("color-index", 0);
    info.handleEvent<&Self::onMouseWheel>("mouse-wheel");
    info.handleEvent<&Self::eventCopy>("copy");
    info.handleEvent<&Self::eventPaste>("paste");
}

CKnob::CKnob() : tick_(*this, [this] { takePosition(); }) {}

CError CKnob::initChilds()
{
    QEL_TRY(CView::initChilds(), getFullName());
    QEL_TRY(makeParam(*this), getFullName());
    QEL_TRY(makeController(*this, controller_), getFullName());
    return {};
}

void CKnob::release()
{
    tick_.stop();
    CView::release();
}

CError CKnob::attrColorIndex()
{
    if (colorSwatch_.isEmpty() || isReleased()) {
        return {};
    }
    const auto* const swatch = dynamic_cast<const CColorSwatch*>(findObject(colorSwatch_));
    const CString color = swatch ? swatch->getColor(colorIndex_) : CString();
    return color.isEmpty() ? CError() : setAttribute("color", color, true);
}

// --- where the pointer is

CPoint CKnob::getCenter() const
{
    const double scale = getInterfaceScale();
    const CRect& area = getArea();
    return {centerX_ < 0.0 ? area.width / 2.0 : centerX_ * scale,
            centerY_ < 0.0 ? area.height / 2.0 : centerY_ * scale};
}

CPoint CKnob::fromCenter(const CAttrMap& parameters) const
{
    const CPoint center = getCenter();
    return {eventNumber(parameters, "x") - getArea().x - center.x,
            eventNumber(parameters, "y") - getArea().y - center.y};
}

bool CKnob::isInRing(const CAttrMap& parameters) const
{
    if (outerRadius_ <= 0.0) {
        return true;
    }
    const bool isTablet = controller_->getSettings().isTabletMode() && tabletOuterRadius_ > 0.0;
    const double inner = (isTablet ? 0.0 : innerRadius_) * getInterfaceScale();
    const double outer = (isTablet ? tabletOuterRadius_ : outerRadius_) * getInterfaceScale();
    const CPoint point = fromCenter(parameters);
    const double square = point.x * point.x + point.y * point.y;
    return square >= inner * inner && square <= outer * outer;
}

// --- pointer

CError CKnob::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CView::onMousePress(parameters);
    if (!isReleased() && !actsDisabled() && isInRing(parameters)) {
        collectError(first, press(parameters));
    }
    return first;
}

CError CKnob::press(const CAttrMap& parameters)
{
    auto* const linked = linkedKnob_.isEmpty() ? nullptr : dynamic_cast<CView*>(findObject(linkedKnob_));
    controller_->setLinkedView(linked, isLinkInversed_);
    if (eventFlag(parameters, "is-ctrl")) {
        return controller_->resetToDefault();
    }
    if (eventFlag(parameters, "is-double-click")) {
        return openTextEntry();
    }
    const bool isRadial = controller_->getSettings().isRadialKnobMode() && !linked;
    mode_ = isRadial ? Mode::kRadial : Mode::kDragging;
    CError first = setState(kDragged);
    collectError(first, controller_->press(parameters, isRadial));
    if (isRadial) {
        collectError(first, moveToPointer(parameters));
    }
    return first;
}

CError CKnob::moveToPointer(const CAttrMap& parameters)
{
    const CPoint point = fromCenter(parameters);
    return controller_->moveTo(getZone().positionAt(point.x, point.y));
}

CError CKnob::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CView::onMouseMove(parameters);
    if (mode_ == Mode::kIdle || isReleased()) {
        return first;
    }
    if (actsDisabled()) {
        collectError(first, endDrag());
    } else {
        collectError(first,
                     mode_ == Mode::kRadial ? moveToPointer(parameters) : controller_->drag(parameters));
    }
    return first;
}

CError CKnob::onMouseRelease(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = endDrag();
    collectError(first, CView::onMouseRelease(parameters));
    return first;
}

CError CKnob::onMouseCancel(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = endDrag();
    collectError(first, CView::onMouseCancel(parameters));
    return first;
}

CError CKnob::endDrag()
{
    if (mode_ == Mode::kIdle) {
        return {};
    }
    mode_ = Mode::kIdle;
    CError first = controller_->finish();
    collectError(first, unsetState(kDragged));
    if (!isStateActive(kHover)) {
        collectError(first, tellLabels("hide"));
    }
    return first;
}

CError CKnob::onMouseEnter(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CView::onMouseEnter(parameters);
    if (!isReleased() && !actsDisabled()) {
        collectError(first, tellLabels("show"));
    }
    return first;
}

CError CKnob::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CView::onMouseExit(parameters);
    if (mode_ == Mode::kIdle && !isReleased()) {
        collectError(first, controller_->leave());
        collectError(first, tellLabels("hide"));
    }
    return first;
}

CError CKnob::onMouseReleaseR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CView::onMouseReleaseR(parameters);
    if (!isReleased() && !actsDisabled()) {
        CAttrMap sent = parameters;
        sent["tag"] = CAttrValue("ui:label-copy-paste");
        sent["window-alignment"] = CAttrValue("cursor");
        sent["is-popup-toggle-always-create"] = CAttrValue(true);
        sent["popup-owner-label"] = CAttrValue(getFullName());
        collectError(first, receiveEvent("popup-toggle", sent));
    }
    return first;
}

CError CKnob::onMouseWheel(const CAttrMap& parameters)
{
    if (actsDisabled()) {
        return {};
    }
    auto* const linked = linkedKnob_.isEmpty() ? nullptr : dynamic_cast<CView*>(findObject(linkedKnob_));
    controller_->setLinkedView(linked, isLinkInversed_);
    return controller_->turnWheel(parameters);
}

// --- children

CError CKnob::openTextEntry()
{
    CObject* const readOut = findObject(kReadOutPath);
    CAttrMap parameters;
    parameters["state"] = CAttrValue("focus");
    return readOut ? sendEvent(*readOut, "set-state", parameters) : CError();
}

CError CKnob::tellLabels(const char* event)
{
    CObject* const labels = findObject(kLabelsPath);
    return labels ? sendEvent(*labels, event, {}) : CError();
}

CError CKnob::eventCopy(const CAttrMap&)
{
    return controller_->copy();
}

CError CKnob::eventPaste(const CAttrMap&)
{
    return actsDisabled() ? CError() : controller_->paste();
}

// --- the parameter

CError CKnob::onParamAdded(CUIParam& param)
{
    if (!param_) {
        param_ = &param;
    }
    return {};
}

CError CKnob::onParamRemoved(CUIParam& param)
{
    if (param_ == &param) {
        param_ = nullptr;
    }
    return {};
}

CError CKnob::onParamUpdate(CUIParam& param)
{
    if (param_ == &param) {
        takePosition();
    }
    return {};
}

CError CKnob::onParamInfo(CUIParam& param)
{
    if (param_ == &param) {
        isFromMiddle_ = isArcFromMiddle();
        takePosition();
        markLook();
    }
    return {};
}

bool CKnob::isArcFromMiddle() const
{
    if (isAxisZero_) {
        return CAttrValue(*isAxisZero_).toBool().value_or(false);
    }
    const auto textAt = [&](double norm) { return param_->getTextOf(0, param_->toValue(0, norm)); };
    // By the text: the real value of a gain of 0 dB is not 0.
    return param_->getInfo() && parseReal(textAt(0.5)) == 0.0 && textAt(0.0).startsWith("-");
}

void CKnob::takePosition()
{
    if (!param_ || isReleased()) {
        return;
    }
    const double position = param_->getNorm(0) * kLastPicture;
    const auto picture = static_cast<std::int32_t>(std::floor(position + 0.5));
    const double nowSec = CViewContext::getTimeSec();
    if (picture != picture_ && updateFps_ > 0.0 && nowSec - shownSec_ < 1.0 / updateFps_ &&
        nowSec >= shownSec_) {
        tick_.start(getViewContext().getTimer());
        return;
    }
    tick_.stop();
    if (picture != picture_) {
        picture_ = picture;
        shownSec_ = nowSec;
        markLook();
    }
}

// --- look

void CKnob::draw(CDrawContext& context)
{
    const auto index = static_cast<std::uint32_t>(picture_);
    const CRect place =
        getAlignedImageCoords(index, true, kWholeClip, CAlignment::kCenter, CAlignment::kStart);
    const CPoint point{place.x, place.y};
    drawImageLayer(context, index, true, kBodyLayer, point, kWholeClip, 1.0);
    if (!actsDisabled()) {
        drawImageLayer(context, index, true, isFromMiddle_ ? kMiddleArcLayer : kArcLayer, point, kWholeClip,
                       1.0);
    }
}

} // namespace qel
