// Turns gestures of the hand into changes of parameters.
#include "CUIParamController.h"

#include "CAudioParamConverterEnum.h"
#include "CAudioParamInfo.h"
#include "CGlobalSettings.h"
#include "CParamEdit.h"
#include "CSystemClipboard.h"
#include "CView.h"
#include "CViewWindow.h"
#include "EventParameters.h"
#include "KnobLaws.h"
#include "ParamText.h"

#include <cmath>

namespace qel {

namespace {

constexpr const char* kSettingsPath = "ui.global-settings";
// What says whether a button is on, beside what a control moves.
constexpr const char* kActivityParam = "ui-param-activity";

// Notches that follow each other faster are one movement of the hand.
constexpr double kPauseSec = 0.5;

// The declaration of a parameter whose values are whole numbers, or null.
const CAudioParamInfo* discreteInfoOf(const CUIParam& param, std::size_t& outIndex, std::int32_t element)
{
    const CAudioParamInfo* const info = param.getInfo();
    if (!info || info->converters.empty()) {
        return nullptr;
    }
    outIndex = static_cast<std::size_t>(param.getFirstElement() + element) % info->converters.size();
    const bool hasStates = dynamic_cast<const CAudioParamConverterEnum*>(info->converters[outIndex]);
    return info->isDiscrete || hasStates ? info : nullptr;
}

// The position that one unit of a discrete parameter takes, or 0.
double unitOf(const CUIParam& param, std::int32_t element)
{
    std::size_t index = 0;
    const CAudioParamInfo* const info = discreteInfoOf(param, index, element);
    if (!info) {
        return 0.0;
    }
    const double range = std::fabs(info->maxValues[index] - info->minValues[index]);
    return range > 0.0 ? 1.0 / range : 0.0;
}

// The bridge of a parameter whose values are numbers, or null: texts and settings take no part in an edit of
// several.
const CParamBridge* numberBridgeOf(const CUIParam& param)
{
    const CAudioParamInfo* const info = param.getInfo();
    return info && !info->isString() ? param.getBridge() : nullptr;
}

double axisOf(const CAttrMap& parameters, bool isHorizontal)
{
    return isHorizontal ? eventNumber(parameters, "actual-x") : -eventNumber(parameters, "actual-y");
}

} // namespace

double CUIParamController::CMoved::toPosition() const
{
    const double norm = param->getNorm(element);
    return isInverse ? 1.0 - norm : norm;
}

double CUIParamController::CMoved::toValue(double position) const
{
    const double exact = param->toValue(element, isInverse ? 1.0 - position : position);
    std::size_t index = 0;
    return discreteInfoOf(*param, index, element) ? std::round(exact) : exact;
}

void CUIParamController::buildClassInfo(CClassInfo& info)
{
    using Self = CUIParamController;
    CObject::buildClassInfo(info);
    info.bind<&Self::mode_>("mode", 1);
    info.bind<&Self::isAxisZero_>("is-axis-zero", false);
    info.bind<&Self::isHorizontal_>("is-horizontal", false);
    info.bind<&Self::isMotionSmoothed_>("is-motion-smoothed", false);
    info.bind<&Self::isUndoDisabled_>("is-undo-disabled", false);
}

CUIParamController::CUIParamController()
    : tick_(*this, [this] { onTick(); }), self_(std::make_shared<CUIParamController*>(this))
{}

CError CUIParamController::init()
{
    QEL_TRY(CObject::init(), getFullName());
    view_ = dynamic_cast<CView*>(getParent());
    if (!view_) {
        QEL_FAIL(getFullName(), "@qelstr_CUIParamController_init_NoView Parent object is not a view.");
    }
    QEL_TRY(
        require(settings_, kSettingsPath,
                "@qelstr_CUIParamController_init_NoGlobalSettings Unable to locate global settings object."),
        getFullName());
    return {};
}

void CUIParamController::release()
{
    *self_ = nullptr;
    if (CError error = finish()) {
        traceError(error);
    }
    CObject::release();
}

void CUIParamController::setLinkedView(CView* view, bool isInverse)
{
    linkedView_ = view ? view->getFullName() : CString();
    isLinkInverse_ = isInverse;
}

// --- what a gesture moves

void CUIParamController::collect(const CObject& view, bool isInverse, bool isAll)
{
    for (std::size_t i = 0; i < view.getChildCount(); ++i) {
        auto* const param = dynamic_cast<CUIParam*>(view.getChild(i));
        if (!param || !param->isBound() || param->getName() == kActivityParam) {
            continue;
        }
        if (!isAll && !moved_.empty()) {
            return;
        }
        const std::int32_t count = isAll ? param->getElementCount() : std::min(param->getElementCount(), 1);
        for (std::int32_t element = 0; element < count; ++element) {
            moved_.push_back({param, element, isInverse, param->getValue(element)});
        }
        params_.push_back(param);
        holds_.emplace_back(*param);
    }
}

CError CUIParamController::begin(Gesture gesture, bool isAll)
{
    QEL_TRY(finish(), getFullName());
    if (isReleased()) {
        return {};
    }
    collect(*view_, false, isAll);
    const CObject* const linked = isAll && !linkedView_.isEmpty() ? findObject(linkedView_) : nullptr;
    if (linked && linked != view_) {
        collect(*linked, isLinkInverse_, isAll);
    }
    std::vector<double> starts;
    for (const CMoved& moved : moved_) {
        starts.push_back(moved.toPosition());
    }
    gesture_ = gesture;
    isAll_ = isAll;
    const bool isProportional = gesture == Gesture::kDrag && mode_ == 0;
    drag_.begin(isProportional ? CValueDrag::Mode::kProportional : CValueDrag::Mode::kAdditive,
                isAxisZero_ ? 0.5 : 0.0, std::move(starts));
    drag_.setSmoothed(gesture == Gesture::kDrag && isMotionSmoothed_);
    CError first;
    for (CUIParam* const param : params_) {
        if (isUndoDisabled_) {
            param->setUndoDisabled(true);
        }
        collectError(first, param->beginEdit());
    }
    return first;
}

CError CUIParamController::finish()
{
    if (gesture_ == Gesture::kNone) {
        return {};
    }
    const CHold hold(*this);
    gesture_ = Gesture::kNone;
    tick_.stop();
    moved_.clear();
    const std::list<CHold> holds = std::exchange(holds_, {});
    CError first;
    for (CUIParam* const param : std::exchange(params_, {})) {
        collectError(first, param->endEdit());
    }
    return first;
}

// Writes all parameters together once one of them has changed: the history makes one step of successive
// writes to the same ones.
CError CUIParamController::apply()
{
    const CHold hold(*this);
    bool isChanged = false;
    for (std::size_t i = 0; i < moved_.size(); ++i) {
        const double value = moved_[i].toValue(drag_.getPosition(i));
        isChanged = isChanged || value != moved_[i].value;
        moved_[i].value = value;
    }
    CError first;
    CParamEdit edit;
    // A shared attribute is set at once, and what hears of it may end this gesture.
    for (std::size_t i = 0; isChanged && i < moved_.size(); ++i) {
        const CMoved moved = moved_[i];
        collectError(first, moved.param->setValue(moved.element, moved.value, &edit));
    }
    collectError(first, edit.send());
    return first;
}

// --- drags

CError CUIParamController::press(const CAttrMap& parameters, bool isRadial)
{
    QEL_TRY(begin(isRadial ? Gesture::kRadial : Gesture::kDrag, true), getFullName());
    pointer_ = axisOf(parameters, isHorizontal_);
    return {};
}

CError CUIParamController::drag(const CAttrMap& parameters)
{
    if (gesture_ != Gesture::kDrag) {
        return {};
    }
    const double pointer = axisOf(parameters, isHorizontal_);
    const double movedPx = pointer - std::exchange(pointer_, pointer);
    double step = dragStepOf(settings_->getDragPrecision());
    if (eventFlag(parameters, "is-shift")) {
        step *= shiftFactorOf(settings_->getShiftKeyPrecision());
    }
    drag_.move(movedPx, step, moved_.size() == 1);
    return apply();
}

CError CUIParamController::moveTo(double position)
{
    if (gesture_ != Gesture::kRadial) {
        return {};
    }
    drag_.begin(CValueDrag::Mode::kRadial, 0.0, std::vector<double>(moved_.size(), position));
    return apply();
}

// --- steps

CError CUIParamController::turnWheel(const CAttrMap& parameters)
{
    return step(eventNumber(parameters, "delta"), eventFlag(parameters, "is-shift"),
                eventFlag(parameters, "is-ctrl"));
}

CError CUIParamController::step(double notches, bool isShift, bool isCtrl)
{
    if (gesture_ == Gesture::kDrag || gesture_ == Gesture::kRadial) {
        return {};
    }
    if (gesture_ != Gesture::kSteps || isCtrl != isAll_) {
        QEL_TRY(begin(Gesture::kSteps, isCtrl), getFullName());
    }
    if (moved_.empty()) {
        return finish();
    }
    double size = wheelStepOf(settings_->getMouseWheelPrecision());
    if (isShift) {
        size *= shiftFactorOf(settings_->getShiftKeyPrecision());
    }
    drag_.move(notches, std::max(size, unitOf(*moved_[0].param, moved_[0].element)), moved_.size() == 1);
    lastStepSec_ = CViewContext::getTimeSec();
    tick_.start(view_->getViewContext().getTimer());
    return apply();
}

void CUIParamController::onTick()
{
    if (CViewContext::getTimeSec() - lastStepSec_ < kPauseSec) {
        return;
    }
    if (CError error = finish()) {
        traceError(error);
    }
}

CError CUIParamController::leave()
{
    return gesture_ == Gesture::kSteps ? finish() : CError();
}

// --- whole values

template <class Change>
CError CUIParamController::change(Change&& make)
{
    const CHold hold(*this);
    QEL_TRY(begin(Gesture::kRadial, true), getFullName());
    CError first;
    CParamEdit edit;
    for (std::size_t i = 0; i < moved_.size(); ++i) {
        collectError(first, make(*moved_[i].param, moved_[i].element, edit));
    }
    collectError(first, edit.send());
    collectError(first, finish());
    return first;
}

CError CUIParamController::resetToDefault()
{
    return change([](CUIParam& param, std::int32_t element, CParamEdit& edit) {
        const CParamBridge* const bridge = numberBridgeOf(param);
        return bridge
                   ? param.setValue(element,
                                    bridge->getDefault(param.getGroup(), param.getFirstElement() + element),
                                    &edit)
                   : param.resetToDefault(element);
    });
}

CError CUIParamController::setText(const CString& text)
{
    return change([&](CUIParam& param, std::int32_t element, CParamEdit& edit) {
        const CParamBridge* const bridge = numberBridgeOf(param);
        double value = 0.0;
        return bridge && bridge->parseText(param.getFirstElement() + element, text, value)
                   ? param.setValue(element, value, &edit)
                   : param.setText(element, text);
    });
}

CString CUIParamController::getText() const
{
    for (std::size_t i = 0; i < view_->getChildCount(); ++i) {
        const auto* const param = dynamic_cast<const CUIParam*>(view_->getChild(i));
        if (param && !(param->getName() == kActivityParam)) {
            return textWithUnit(*param, 0);
        }
    }
    return {};
}

CError CUIParamController::copy()
{
    CViewWindow* const window = view_->getWindow();
    platform::CSystemClipboard* const clipboard = window ? window->getClipboard() : nullptr;
    if (clipboard) {
        clipboard->setText(getText().toUtf8());
    }
    return {};
}

CError CUIParamController::paste()
{
    CViewWindow* const window = view_->getWindow();
    platform::CSystemClipboard* const clipboard = window ? window->getClipboard() : nullptr;
    if (!clipboard) {
        return {};
    }
    // The answer may come long after.
    clipboard->requestText([self = self_](const std::optional<std::string>& text) {
        if (*self && text) {
            // What is copied elsewhere is seldom a value, which is nobody's fault.
            releaseError((*self)->setText(CString::fromUtf8(*text)));
        }
    });
    return {};
}

} // namespace qel
