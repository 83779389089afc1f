// What binds a control to a parameter.
#include "CUIParam.h"

#include "CAudioParamInfo.h"
#include "CParamEdit.h"
#include "CParamGroupSelector.h"
#include "CSharedAttribute.h"
#include "CUIParamUpdateHandler.h"
#include "CViewStateSwitch.h"
#include "NumberSyntax.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// The setting under the name it is followed by here; no name a tree would use.
constexpr const char* kFollowedSetting = "*setting";
constexpr double kActiveFrom = 0.5;
constexpr int kSettingDecimals = 4;

} // namespace

void CUIParam::buildClassInfo(CClassInfo& info)
{
    using Self = CUIParam;
    CObject::buildClassInfo(info);
    info.bind<&Self::bridgePath_>("bridge", "");
    info.bind<&Self::element_, &Self::attrElement>("element", "");
    info.bind<&Self::elementOffset_, &Self::onWindowChanged>("element-offset", 0);
    info.bind<&Self::elementCount_, &Self::onWindowChanged>("element-count", 1);
    info.bind<&Self::group_, &Self::attrGroup>("group", 0);
    info.bind<&Self::selectorPath_>("group-selector", "");
    info.bind<&Self::isReplacing_>("is-replacing", false);
    info.bind<&Self::index_, &Self::attrIndex>("index", 0);
    info.bind<&Self::sharedPath_>("shared-attribute", "");
    info.bind<&Self::sharedValue_, &Self::attrSharedAttributeValue>("shared-attribute-value", std::nullopt);
    info.handleEvent<&Self::onGroupChange>(CParamGroupSelector::kGroupChange);
    info.handleEvent<&Self::onReset>("reset");
}

// --- life

CError CUIParam::init()
{
    QEL_TRY(CObject::init(), getFullName());
    handler_ = dynamic_cast<CUIParamUpdateHandler*>(getParent());
    if (!handler_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CUIParam_init_InvalidParent Parent object does not support ui-param.");
    }
    QEL_TRY(sharedPath_.isEmpty() ? bindBridge() : bindShared(), getFullName());
    QEL_TRY(handler_->onParamAdded(*this), getFullName());
    return onBridgeInfo();
}

CError CUIParam::bindShared()
{
    CSharedAttribute* shared = nullptr;
    QEL_TRY(require(shared, sharedPath_,
                    "@qelstr_CUIParam_init_NoSharedAttribute Invalid parameter shared attribute '%1'."),
            getFullName());
    shared_ = shared;
    listenAttribute(*shared->getParent(), shared->getAttrString("attribute"), kFollowedSetting);
    return {};
}

CError CUIParam::bindBridge()
{
    CParamBridge* bridge = nullptr;
    QEL_TRY(
        require(bridge, bridgePath_, "@qelstr_CUIParam_init_NoBridge Invalid parameter bridge object '%1'."),
        getFullName());
    if (!selectorPath_.isEmpty()) {
        QEL_TRY(require(selector_, selectorPath_,
                        "@qelstr_CUIParam_init_NoGroupSelector Invalid group selector object '%1'."),
                getFullName());
        listenObject(selectorPath_, CParamGroupSelector::kGroupChange, CParamGroupSelector::kGroupChange);
    }
    bridge_ = bridge;
    bridge_->addListener(*this);
    return {};
}

void CUIParam::release()
{
    for (CViewStateSwitch* stateSwitch : std::exchange(switches_, {})) {
        stateSwitch->forgetSource();
    }
    const bool isTold = isBound() && getParent() && !getParent()->isReleased();
    if (bridge_) {
        bridge_->removeListener(*this);
        if (std::exchange(editDepth_, 0) > 0) {
            traceError(letGo());
        }
        bridge_ = nullptr;
    }
    shared_ = nullptr;
    if (isTold) {
        traceError(handler_->onParamRemoved(*this));
    }
    CObject::release();
}

void CUIParam::onBridgeGone()
{
    bridge_ = nullptr;
    editDepth_ = 0;
}

// --- attributes and events

CError CUIParam::onWindowChanged()
{
    return getInitState() < InitState::kAttrsApplied ? CError() : update(true);
}

CError CUIParam::onGroupChange(const CAttrMap&)
{
    return update(true);
}

CError CUIParam::onReset(const CAttrMap&)
{
    return resetToDefault(0);
}

CError CUIParam::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    return key == kFollowedSetting ? update(true) : CObject::onAttrChanged(sender, key, value);
}

CError CUIParam::onBridgeInfo()
{
    shownCount_ = -1;
    return update(true);
}

CError CUIParam::onBridgeValues()
{
    return update(false);
}

CError CUIParam::update(bool isForced)
{
    if (!isKnown()) {
        return {};
    }
    const CHold hold(*this);
    if (const std::int32_t present = getElementCount(); present != shownCount_) {
        shownCount_ = present;
        QEL_TRY(handler_->onParamInfo(*this), getFullName());
        isForced = true;
        if (isReleased()) {
            return {};
        }
    }
    std::vector<double> values;
    std::vector<CString> texts;
    const bool isText = shared_ || getInfo()->isString();
    for (std::int32_t i = 0; i < shownCount_; ++i) {
        if (isText) {
            texts.push_back(getText(i));
        } else {
            values.push_back(getValue(i));
        }
    }
    if (!isForced && values == shownValues_ && texts == shownTexts_) {
        return {};
    }
    shownValues_ = std::move(values);
    shownTexts_ = std::move(texts);
    CError error = handler_->onParamUpdate(*this);
    CError later = isReleased() ? CError() : tellSwitches();
    if (!isReleased()) {
        QEL_TRY(notify(kParamChange, {}, false), getFullName());
    }
    return error ? std::move(error) : std::move(later);
}

// --- values

std::int32_t CUIParam::getGroup() const
{
    return selector_ ? selector_->getGroup() : std::max(group_, 0);
}

std::int32_t CUIParam::getFirstElement() const
{
    return std::max(parseInteger(element_).value_or(0) + elementOffset_, 0);
}

std::int32_t CUIParam::getElementCount() const
{
    if (shared_) {
        return 1;
    }
    if (!getInfo()) {
        return 0;
    }
    const std::int32_t rest = std::max(bridge_->getElementCount(getGroup()) - getFirstElement(), 0);
    // An element behind the end of the list reads as its default, and is made by writing to it.
    return elementCount_ > 0 ? elementCount_ : rest;
}

bool CUIParam::hasElement(std::int32_t i) const
{
    return i >= 0 && i < getElementCount();
}

double CUIParam::getNorm(std::int32_t i) const
{
    if (!hasElement(i)) {
        return 0.0;
    }
    const double norm = shared_ ? getValue(i) : toNorm(i, getValue(i));
    return std::isnan(norm) ? 0.0 : std::clamp(norm, 0.0, 1.0);
}

double CUIParam::getValue(std::int32_t i) const
{
    if (!hasElement(i)) {
        return 0.0;
    }
    if (!shared_) {
        return bridge_->getValue(getGroup(), getFirstElement() + i);
    }
    const CAttrValue text(getSharedText());
    if (sharedValue_) {
        return text.toString() == *sharedValue_ ? 1.0 : 0.0;
    }
    const auto isTrue = text.toBool();
    return isTrue ? (*isTrue ? 1.0 : 0.0) : text.toReal().value_or(0.0);
}

CString CUIParam::getText(std::int32_t i, TextMode mode) const
{
    if (!hasElement(i)) {
        return {};
    }
    return shared_ ? getSharedText() : bridge_->getText(getGroup(), getFirstElement() + i, mode);
}

CString CUIParam::getUnit(std::int32_t i) const
{
    return bridge_ ? bridge_->getUnit(getFirstElement() + i) : CString();
}

double CUIParam::getDefaultNorm(std::int32_t i) const
{
    if (!hasElement(i)) {
        return 0.0;
    }
    if (shared_) {
        const CAttrValue text(shared_->getAttrString("def-value"));
        return std::clamp(text.toReal().value_or(text.toBool().value_or(false) ? 1.0 : 0.0), 0.0, 1.0);
    }
    const std::int32_t element = getFirstElement() + i;
    const double norm = bridge_->toNorm(element, bridge_->getDefault(getGroup(), element));
    return std::isnan(norm) ? 0.0 : std::clamp(norm, 0.0, 1.0);
}

bool CUIParam::isActive() const
{
    return getValue(0) != 0.0;
}

double CUIParam::toNorm(std::int32_t i, double value) const
{
    return bridge_ ? bridge_->toNorm(getFirstElement() + i, value) : value;
}

double CUIParam::toValue(std::int32_t i, double norm) const
{
    return bridge_ ? bridge_->toValue(getFirstElement() + i, norm) : norm;
}

CString CUIParam::getTextOf(std::int32_t i, double value, TextMode mode) const
{
    return bridge_ ? bridge_->getTextOf(getFirstElement() + i, value, mode)
                   : formatReal(value, kSettingDecimals);
}

// --- gestures

CError CUIParam::beginEdit()
{
    if (editDepth_++ > 0 || !bridge_) {
        return {};
    }
    editGroup_ = getGroup();
    editFirst_ = getFirstElement();
    editCount_ = getElementCount();
    for (std::int32_t i = 0; i < editCount_; ++i) {
        QEL_TRY(bridge_->beginEdit(editGroup_, editFirst_ + i), getFullName());
    }
    return {};
}

CError CUIParam::endEdit()
{
    if (editDepth_ == 0 || --editDepth_ > 0 || !bridge_) {
        return {};
    }
    const CHold hold(*this);
    return letGo();
}

CError CUIParam::letGo()
{
    CError first;
    for (std::int32_t i = 0; i < editCount_ && bridge_; ++i) {
        CError error = bridge_->endEdit(editGroup_, editFirst_ + i);
        if (!first) {
            first = std::move(error);
        }
    }
    return first;
}

bool CUIParam::mayWrite() const
{
    return editDepth_ == 0 || (editGroup_ == getGroup() && editFirst_ == getFirstElement());
}

// --- changes

CError CUIParam::setNorm(std::int32_t i, double norm, CParamEdit* edit)
{
    return setValue(i, shared_ ? std::clamp(norm, 0.0, 1.0) : toValue(i, norm), edit);
}

CError CUIParam::setValue(std::int32_t i, double value, CParamEdit* edit)
{
    if (!hasElement(i) || std::isnan(value)) {
        return {};
    }
    if (shared_) {
        return setSharedNumber(value);
    }
    return getInfo()->isString() ? CError() : writeElement(i, value, {}, edit);
}

CError CUIParam::setText(std::int32_t i, const CString& text)
{
    if (!hasElement(i)) {
        return {};
    }
    if (shared_) {
        return setSharedText(text);
    }
    double value = 0.0;
    if (getInfo()->isString()) {
        return writeElement(i, value, text, nullptr);
    }
    if (!bridge_->parseText(getFirstElement() + i, text, value)) {
        QEL_FAIL(getFullName(), "@qelstr_CUIParam_setText_InvalidText '%1' is no value of '%2'.", text,
                 getInfo()->visualName);
    }
    return writeElement(i, value, {}, nullptr);
}

CError CUIParam::writeElement(std::int32_t i, double value, const CString& text, CParamEdit* edit)
{
    if (!mayWrite()) {
        return {};
    }
    const std::int32_t count = isReplacing_ ? getElementCount() : 1;
    const std::int32_t first = isReplacing_ ? 0 : i;
    std::vector<double> values;
    std::vector<CString> texts;
    for (std::int32_t at = first; at < first + count; ++at) {
        if (getInfo()->isString()) {
            texts.push_back(at == i ? text : getText(at));
        } else {
            values.push_back(at == i ? value : getValue(at));
        }
    }
    const std::int32_t element = getFirstElement() + first;
    const bool isEnd = isReplacing_ && element + count >= bridge_->getElementCount(getGroup());
    return bridge_->write({.group = getGroup(),
                           .element = element,
                           .values = values,
                           .texts = texts,
                           .isEnd = isEnd,
                           .isUndoDisabled = isUndoDisabled_},
                          edit);
}

CError CUIParam::resetToDefault(std::int32_t i)
{
    if (!hasElement(i) || !mayWrite()) {
        return {};
    }
    return shared_ ? shared_->reset()
                   : bridge_->resetToDefault(getGroup(), getFirstElement() + i, isUndoDisabled_);
}

// --- shared attribute

CString CUIParam::getSharedText() const
{
    return shared_->getParent()->getAttrString(shared_->getAttrString("attribute"));
}

CError CUIParam::setSharedText(const CString& text)
{
    return shared_->getParent()->setAttribute(shared_->getAttrString("attribute"), CAttrValue(text), true);
}

CError CUIParam::setSharedNumber(double value)
{
    const bool isOn = value >= kActiveFrom;
    if (sharedValue_) {
        const bool isFlag = *sharedValue_ == "true" || *sharedValue_ == "false";
        if (!isOn && !isFlag) {
            return {}; // one of several: another one takes its place
        }
        const bool isTrue = isOn == (*sharedValue_ == "true");
        return setSharedText(isFlag ? CString(isTrue ? "true" : "false") : *sharedValue_);
    }
    const CString present = getSharedText();
    if (present == "true" || present == "false") {
        return setSharedText(isOn ? "true" : "false");
    }
    const bool isWhole = parseInteger(present) && value == std::nearbyint(value);
    return setSharedText(formatReal(value, isWhole ? 0 : kSettingDecimals));
}

// --- state switches

CError CUIParam::addSwitch(CViewStateSwitch& stateSwitch)
{
    switches_.push_back(&stateSwitch);
    return isKnown() ? tellSwitches() : CError();
}

void CUIParam::removeSwitch(CViewStateSwitch& stateSwitch)
{
    std::erase(switches_, &stateSwitch);
}

CError CUIParam::tellSwitches()
{
    const bool isText = shared_ ? !sharedValue_ : getInfo()->isString();
    const CAttrValue value = isText ? CAttrValue(getText(0)) : CAttrValue(getValue(0));
    const CHold hold(*this);
    CError first;
    for (CViewStateSwitch* stateSwitch : std::vector(switches_)) {
        if (std::find(switches_.begin(), switches_.end(), stateSwitch) == switches_.end()) {
            continue;
        }
        CError error = stateSwitch->setWatchedValue(value);
        if (!first) {
            first = std::move(error);
        }
    }
    return first;
}

} // namespace qel
