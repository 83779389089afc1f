// The parameter slots of one process.
#include "CAudioProcessSlots.h"

#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamDef.h"
#include "Definitions/CAudioParamAllocDef.h"
#include "Definitions/CAudioProcessDefBase.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {

namespace {

// The definition's own parameter of this name gives a slot its default shape.
const CAudioParamDef* localParam(const CAudioProcessDefBase& def, const CString& name)
{
    return dynamic_cast<const CAudioParamDef*>(def.findChild(name));
}

} // namespace

CAudioProcessSlots::~CAudioProcessSlots()
{
    for (const auto& slot : slots_) {
        if (slot->param) {
            slot->param->audioSide().unbind(slot->binding);
        }
    }
}

// --- building

CError CAudioProcessSlots::bind(const CAudioProcessDefBase& def, const CString& processName,
                                CAudioParamCollector& params, int group)
{
    isGroup0_ = def.isGroup0();
    isElement0_ = def.isElement0();
    entryShift_ = def.stackIndexShift();
    for (std::size_t i = 0; i < def.getChildCount(); ++i) {
        const auto* alloc = dynamic_cast<const CAudioParamAllocDef*>(def.getChild(i));
        if (!alloc) {
            continue;
        }
        const CString name = processName + "." + alloc->getParamName();
        const CAudioParamDef* local = localParam(def, alloc->getParamName());
        Slot& slot = add(alloc->getIndex());
        if (params.isRemapped(name) || (local && local->getInfo().isGlobal)) {
            prepare(slot, params.resolveParam(name), group);
        } else if (local) {
            slot.values.fillWithDefaults(local->getInfo());
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
    Slot& slot = add(nextStateSlot_++);
    prepare(slot, param, -1);
    return slot.number;
}

CAudioProcessSlots::Slot& CAudioProcessSlots::add(int number)
{
    slots_.push_back(std::make_unique<Slot>());
    Slot& slot = *slots_.back();
    slot.number = number;
    const auto index = static_cast<std::size_t>(number);
    if (index < quick_.size() && !quick_[index]) {
        quick_[index] = &slot;
    }
    return slot;
}

void CAudioProcessSlots::prepare(Slot& slot, CAudioParam& param, int group)
{
    slot.binding.queue = &queue_;
    slot.binding.storage = &slot.values;
    slot.binding.isDirty = &isDirty_;
    slot.binding.group = group;
    slot.param = param.audioSide().prepare(slot.binding) ? &param : nullptr;
}

// --- audio thread

void CAudioProcessSlots::follow()
{
    for (const auto& slot : slots_) {
        if (slot->param) {
            slot->param->audioSide().bind(slot->binding);
        }
    }
}

bool CAudioProcessSlots::applyUntil(double limitSec)
{
    const bool hasChanged = queue_.applyUntil(limitSec, [](const auto&, const auto&) {});
    isDirty_ = !queue_.isEmpty();
    return hasChanged;
}

double CAudioProcessSlots::nextEventSec() const
{
    const CAudioParamEventNode* next = queue_.peek();
    return next ? next->event->getTime() : std::numeric_limits<double>::infinity();
}

const CAudioProcessSlots::Slot* CAudioProcessSlots::findAmongAll(int number) const
{
    const auto entry = std::find_if(slots_.begin(), slots_.end(),
                                    [number](const auto& slot) { return slot->number == number; });
    return entry == slots_.end() ? nullptr : entry->get();
}

double CAudioProcessSlots::value(int slotNumber, int group, int entry) const
{
    const Slot* slot = find(slotNumber);
    if (!slot) {
        return 0.0;
    }
    const int wanted = isElement0_ ? 0 : entry + entryShift_;
    const double value = slot->values.get(isGroup0_ ? 0 : group, wanted);
    if (!std::isnan(value)) {
        return value;
    }
    // A damaged file can hold that, and a filter made from it would never sound again.
    const std::span<const double> fill = slot->values.getFill();
    return fill.empty() ? 0.0 : fill[std::min(static_cast<std::size_t>(wanted), fill.size() - 1)];
}

double CAudioProcessSlots::valueOrLast(int slotNumber, int group, int entry) const
{
    const Slot* slot = find(slotNumber);
    const bool isMissing =
        slot && slot->values.getFillCount() > 0 && entry >= elementCount(slotNumber, group);
    return isMissing ? slot->values.getFill().back() : value(slotNumber, group, entry);
}

double CAudioProcessSlots::stateValue(int slotNumber, int group) const
{
    const Slot* slot = find(slotNumber);
    return slot ? slot->values.getForState(group, isElement0_ ? 0 : entryShift_) : 0.0;
}

int CAudioProcessSlots::entryCount(int slotNumber, int group) const
{
    const Slot* slot = find(slotNumber);
    if (!slot) {
        return 0;
    }
    const int stored = slot->values.getCount(isGroup0_ ? 0 : group);
    return stored > 0 ? stored : slot->values.getFillCount();
}

int CAudioProcessSlots::elementCount(int slotNumber, int group) const
{
    const Slot* slot = find(slotNumber);
    return slot ? std::max(entryCount(slotNumber, group), slot->values.getFillCount()) : 0;
}

} // namespace qel
