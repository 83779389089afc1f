// The value of a parameter as text.
#include "CReadOut.h"

#include "CUIParamController.h"
#include "ControlChildren.h"
#include "EventParameters.h"
#include "LiteralText.h"
#include "ParamText.h"

#include <cmath>

namespace qel {

namespace {

// A hand that clicks twice trembles; a value must not change by that.
constexpr double kDragFromPx = 3.0;

} // namespace

void CReadOut::buildClassInfo(CClassInfo& info)
{
    using Self = CReadOut;
    CTextView::buildClassInfo(info);
    info.bind<&Self::needsController_>("needs-ui-param-controller", false);
    info.bind<&Self::default_>("default-value", std::nullopt);
    info.bind<&Self::isUnitHidden_, &Self::attrUnit>("is-unit-hidden", false);
    info.handleEvent<&Self::onMouseWheel>("mouse-wheel");
}

CError CReadOut::initChilds()
{
    QEL_TRY(CFramedText::initChilds(), getFullName());
    QEL_TRY(makeParam(*this), getFullName());
    if (needsController_) {
        QEL_TRY(makeController(*this, controller_), getFullName());
    }
    return {};
}

// --- pointer

CError CReadOut::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CFramedText::onMousePress(parameters);
    if (!controller_ || isReleased() || actsDisabled() || isEditing()) {
        return first;
    }
    if (eventFlag(parameters, "is-ctrl")) {
        collectError(first, controller_->resetToDefault());
    } else if (!eventFlag(parameters, "is-double-click")) {
        drag_ = Drag::kPressed;
        press_ = parameters;
    }
    return first;
}

CError CReadOut::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CFramedText::onMouseMove(parameters);
    if (drag_ == Drag::kNone || isReleased()) {
        return first;
    }
    if (actsDisabled()) {
        collectError(first, endDrag());
        return first;
    }
    const double movedPx = eventNumber(parameters, "actual-y") - eventNumber(press_, "actual-y");
    if (drag_ == Drag::kPressed && std::fabs(movedPx) >= kDragFromPx) {
        drag_ = Drag::kMoving;
        collectError(first, controller_->press(press_));
    }
    if (drag_ == Drag::kMoving) {
        collectError(first, controller_->drag(parameters));
    }
    return first;
}

CError CReadOut::endDrag()
{
    const Drag drag = std::exchange(drag_, Drag::kNone);
    return drag == Drag::kMoving ? controller_->finish() : CError();
}

CError CReadOut::onMouseRelease(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = endDrag();
    collectError(first, CFramedText::onMouseRelease(parameters));
    return first;
}

CError CReadOut::onMouseCancel(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = endDrag();
    collectError(first, CFramedText::onMouseCancel(parameters));
    return first;
}

CError CReadOut::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = CFramedText::onMouseExit(parameters);
    if (controller_ && drag_ == Drag::kNone && !isReleased()) {
        collectError(first, controller_->leave());
    }
    return first;
}

CError CReadOut::onMouseWheel(const CAttrMap& parameters)
{
    if (!controller_ || actsDisabled()) {
        return {};
    }
    rememberValues();
    return controller_->turnWheel(parameters);
}

CError CReadOut::eventSetState(const CAttrMap& parameters)
{
    return eventText(parameters, "state") == "focus" ? openEditBox() : CFramedText::eventSetState(parameters);
}

// --- the edit box

CString CReadOut::getEditText(std::int32_t paragraph) const
{
    return param_ ? param_->getText(0) : CFramedText::getEditText(paragraph);
}

CError CReadOut::onTextCommitted(const CString& text, std::int32_t paragraph)
{
    before_.reset();
    if (!param_) {
        return CFramedText::onTextCommitted(text, paragraph);
    }
    if (text == param_->getText(0)) {
        return {}; // the value may be finer than its text
    }
    if (!text.isEmpty() || default_) {
        // A text that is no value leaves the one that there is.
        releaseError(write(text.isEmpty() ? *default_ : text));
        return {};
    }
    return controller_ ? controller_->resetToDefault() : param_->resetToDefault(0);
}

CError CReadOut::write(const CString& text)
{
    return controller_ ? controller_->setText(text) : param_->setText(0, text);
}

void CReadOut::rememberValues()
{
    if (!isEditing() || before_ || !param_) {
        return;
    }
    before_.emplace();
    for (std::int32_t i = 0; i < param_->getElementCount(); ++i) {
        before_->push_back(param_->getValue(i));
    }
}

CError CReadOut::onEditStep(double notches, bool isShift, bool isCtrl)
{
    if (!controller_ || actsDisabled()) {
        return {};
    }
    rememberValues();
    return controller_->step(notches, isShift, isCtrl);
}

CError CReadOut::onEditCancelled()
{
    const auto before = std::exchange(before_, std::nullopt);
    if (!before || !param_) {
        return {};
    }
    const CHold hold(*this);
    CUIParam& param = *param_;
    const CHold paramHold(param);
    CError first;
    for (std::size_t i = 0; i < before->size(); ++i) {
        collectError(first, param.setValue(static_cast<std::int32_t>(i), (*before)[i]));
    }
    if (!isReleased()) {
        collectError(first, controller_->finish());
    }
    return first;
}

// --- the parameter

CError CReadOut::showValue()
{
    if (!param_ || isReleased()) {
        return {};
    }
    CError first = setTitle(literalText(isUnitHidden_ ? param_->getText(0) : textWithUnit(*param_, 0)));
    if (before_ && !isReleased()) {
        collectError(first, setEditText(param_->getText(0)));
    }
    return first;
}

CError CReadOut::onParamAdded(CUIParam& param)
{
    if (!param_) {
        param_ = &param;
    }
    return {};
}

CError CReadOut::onParamRemoved(CUIParam& param)
{
    if (param_ == &param) {
        param_ = nullptr;
    }
    return {};
}

CError CReadOut::onParamUpdate(CUIParam& param)
{
    return param_ == &param ? showValue() : CError();
}

CError CReadOut::onParamInfo(CUIParam& param)
{
    return onParamUpdate(param);
}

} // namespace qel
