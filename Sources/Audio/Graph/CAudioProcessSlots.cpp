// The parameter slots of one process.
#include "CAudioProcessSlots.h"

#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamDef.h"
#include "Definitions/CAudioProcessDefBase.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {

namespace {

// Of a slot without a parameter.
const CAudioParamStorage kNoValues;

} // namespace

CAudioProcessSlots::~CAudioProcessSlots()
{
    for (const auto& follower : followers_) {
        if (CAudioParam* const param = follower->binding.param) {
            param->audioSide().unbind(follower->binding);
        }
    }
}

// --- building

CError CAudioProcessSlots::bind(const CAudioProcessDefBase& def, const CString& processName,
                                CAudioParamCollector& params, int group, CAudioParamMark& mark,
                                const bool& isHeld)
{
    queue_.holdWhile(isHeld);
    mark_ = &mark;
    isGroup0_ = def.isGroup0();
    isElement0_ = def.isElement0();
    entryShift_ = def.stackIndexShift();
    slots_.reserve(def.slots().size());
    for (const CAudioProcessDefBase::Slot& slot : def.slots()) {
        const CString name = processName + "." + slot.paramName;
        if (params.isRemapped(name) || (slot.local && slot.local->getInfo().isGlobal)) {
            addFollower(slot.number, params.resolveParam(name), group);
        } else {
            add(slot.number, slot.local ? slot.local->getDefaults() : kNoValues);
        }
    }
    return {};
}

int CAudioProcessSlots::addStateSlot(const CString& paramName, CAudioParamCollector& params)
{
    CAudioParam& param = params.resolveParam(paramName);
    if (!param.hasInfo()) {
        return -1;
    }
    addFollower(nextStateSlot_, param, -1);
    return nextStateSlot_++;
}

void CAudioProcessSlots::add(int number, const CAudioParamStorage& values)
{
    slots_.push_back({number, &values});
}

void CAudioProcessSlots::addFollower(int number, CAudioParam& param, int group)
{
    auto follower = std::make_unique<Follower>();
    follower->binding.queue = &queue_;
    follower->binding.storage = &follower->values;
    follower->binding.mark = mark_;
    follower->binding.group = group;
    if (!param.audioSide().prepare(follower->binding)) {
        add(number, kNoValues);
        return;
    }
    add(number, follower->values);
    followers_.push_back(std::move(follower));
}

// --- audio thread

void CAudioProcessSlots::follow()
{
    for (const auto& follower : followers_) {
        follower->binding.param->audioSide().bind(follower->binding);
    }
}

bool CAudioProcessSlots::applyUntil(double limitSec)
{
    const bool hasChanged = queue_.applyUntil(limitSec, [](const auto&, const auto&) {});
    if (queue_.isEmpty()) {
        mark_->lower();
    }
    return hasChanged;
}

double CAudioProcessSlots::nextEventSec() const
{
    const CAudioParamEventNode* next = queue_.peek();
    return next ? next->event->getTime() : std::numeric_limits<double>::infinity();
}

const CAudioParamStorage* CAudioProcessSlots::findAmongAll(int number) const
{
    const auto entry = std::ranges::find(slots_, number, &Slot::number);
    return entry == slots_.end() ? nullptr : entry->values;
}

double CAudioProcessSlots::value(int slotNumber, int group, int entry) const
{
    const CAudioParamStorage* values = find(slotNumber);
    if (!values) {
        return 0.0;
    }
    const int wanted = isElement0_ ? 0 : entry + entryShift_;
    const double value = values->get(isGroup0_ ? 0 : group, wanted);
    if (!std::isnan(value)) {
        return value;
    }
    // A damaged file can hold that, and a filter made from it would never sound again.
    const std::span<const double> fill = values->getFill();
    return fill.empty() ? 0.0 : fill[std::min(static_cast<std::size_t>(wanted), fill.size() - 1)];
}

double CAudioProcessSlots::valueOrLast(int slotNumber, int group, int entry) const
{
    const CAudioParamStorage* values = find(slotNumber);
    const bool isMissing = values && values->getFillCount() > 0 && entry >= elementCount(slotNumber, group);
    return isMissing ? values->getFill().back() : value(slotNumber, group, entry);
}

double CAudioProcessSlots::stateValue(int slotNumber, int group) const
{
    const CAudioParamStorage* values = find(slotNumber);
    return values ? values->getForState(group, isElement0_ ? 0 : entryShift_) : 0.0;
}

int CAudioProcessSlots::entryCount(int slotNumber, int group) const
{
    const CAudioParamStorage* values = find(slotNumber);
    if (!values) {
        return 0;
    }
    const int stored = values->getCount(isGroup0_ ? 0 : group);
    return stored > 0 ? stored : values->getFillCount();
}

int CAudioProcessSlots::elementCount(int slotNumber, int group) const
{
    const CAudioParamStorage* values = find(slotNumber);
    return values ? std::max(entryCount(slotNumber, group), values->getFillCount()) : 0;
}

} // namespace qel
