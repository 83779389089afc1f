// What stands for a parameter in the tree of the interface.
#include "CParamBridge.h"

#include "CAudioParamInfo.h"
#include "CParamGroupSelector.h"
#include "CViewStateSwitch.h"
#include "DisplayNumber.h"
#include "NumberSyntax.h"

#include <algorithm>
#include <limits>

namespace qel {

namespace {

// The group of a switch under the name it is followed by here; no name a tree would use.
constexpr const char* kFollowedGroup = "*group";

} // namespace

void CParamBridge::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
}

void CParamBridge::release()
{
    for (CParamBridgeListener* listener : std::exchange(listeners_, {})) {
        listener->onBridgeGone();
    }
    for (CViewStateSwitch* stateSwitch : std::exchange(switches_, {})) {
        stateSwitch->forgetSource();
    }
    CObject::release();
}

// --- converted

const CAudioParamConverter* CParamBridge::converterOf(std::int32_t element, std::int32_t& outIndex) const
{
    const CAudioParamInfo* const info = getInfo();
    outIndex = info ? element % info->esize : 0;
    return info && outIndex >= 0 ? info->converters[static_cast<std::size_t>(outIndex)] : nullptr;
}

double CParamBridge::toNorm(std::int32_t element, double value) const
{
    std::int32_t index = 0;
    const CAudioParamConverter* const converter = converterOf(element, index);
    return converter ? converter->valueToNorm(*getInfo(), index, value)
                     : std::numeric_limits<double>::quiet_NaN();
}

double CParamBridge::toValue(std::int32_t element, double norm) const
{
    std::int32_t index = 0;
    const CAudioParamConverter* const converter = converterOf(element, index);
    return converter ? converter->normToValue(*getInfo(), index, std::clamp(norm, 0.0, 1.0))
                     : std::numeric_limits<double>::quiet_NaN();
}

bool CParamBridge::parseText(std::int32_t element, const CString& text, double& out) const
{
    std::int32_t index = 0;
    const CAudioParamConverter* const converter = converterOf(element, index);
    bool isValue = false;
    if (converter && !getInfo()->isString()) {
        out = converter->textToValueClamped(*getInfo(), index, text, &isValue);
    }
    return isValue;
}

CString CParamBridge::getUnit(std::int32_t element) const
{
    std::int32_t index = 0;
    const CAudioParamConverter* const converter = converterOf(element, index);
    return converter ? converter->getLabel() : CString();
}

// --- listeners

template <class Call>
CError CParamBridge::forListeners(Call&& call)
{
    const CHold hold(*this);
    CError first;
    // One that is told may take itself or another out.
    for (CParamBridgeListener* listener : std::vector(listeners_)) {
        if (std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end()) {
            continue;
        }
        CError error = call(*listener);
        if (!first) {
            first = std::move(error);
        }
    }
    return first;
}

CError CParamBridge::tellInfo()
{
    return forListeners([](CParamBridgeListener& listener) { return listener.onBridgeInfo(); });
}

CError CParamBridge::tellValues()
{
    const CHold hold(*this);
    CError error = forListeners([](CParamBridgeListener& listener) { return listener.onBridgeValues(); });
    CError later = updateSwitches();
    return error ? std::move(error) : std::move(later);
}

// --- state switches

CError CParamBridge::addSwitch(CViewStateSwitch& stateSwitch)
{
    switches_.push_back(&stateSwitch);
    if (CObject* selector = stateSwitch.findObject(stateSwitch.getGroupSelector())) {
        listenAttribute(*selector, CParamGroupSelector::kGroupIndex, kFollowedGroup);
    }
    return updateSwitch(stateSwitch);
}

void CParamBridge::removeSwitch(CViewStateSwitch& stateSwitch)
{
    std::erase(switches_, &stateSwitch);
}

CError CParamBridge::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    return key == kFollowedGroup ? updateSwitches() : CObject::onAttrChanged(sender, key, value);
}

CError CParamBridge::updateSwitch(CViewStateSwitch& stateSwitch)
{
    const CAudioParamInfo* const info = getInfo();
    if (!info) {
        return {};
    }
    const CString& path = stateSwitch.getGroupSelector();
    const CObject* const selector = path.isEmpty() ? nullptr : stateSwitch.findObject(path);
    const std::int32_t group = selector ? selector->getAttrInt(CParamGroupSelector::kGroupIndex) : 0;
    const std::int32_t element = parseInteger(stateSwitch.getElement()).value_or(0);
    return stateSwitch.setWatchedValue(
        info->isString() ? CAttrValue(getText(group, element, CAudioParamConverter::TextMode::kNormal))
                         : CAttrValue(getValue(group, element)));
}

CError CParamBridge::updateSwitches()
{
    const CHold hold(*this);
    CError first;
    for (CViewStateSwitch* stateSwitch : std::vector(switches_)) {
        if (std::find(switches_.begin(), switches_.end(), stateSwitch) == switches_.end()) {
            continue;
        }
        CError error = updateSwitch(*stateSwitch);
        if (!first) {
            first = std::move(error);
        }
    }
    return first;
}

} // namespace qel
