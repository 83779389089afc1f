// A bypass state of a running compound.
#include "CAudioBypassState.h"

namespace qel {

CError CAudioBypassState::bind(CAudioProcessSlots& slots, const CString& processName,
                               CAudioParamCollector& params)
{
    QEL_TRY(bindOne(slots, processName, params, def_->param(), slot_), processName);
    if (def_->hasAndParam()) {
        QEL_TRY(bindOne(slots, processName, params, def_->andParam(), andSlot_), processName);
    }
    return {};
}

CError CAudioBypassState::bindOne(CAudioProcessSlots& slots, const CString& processName,
                                  CAudioParamCollector& params, const CString& name, int& outSlot)
{
    outSlot = slots.addStateSlot(processName + "." + name, params);
    if (outSlot < 0) {
        QEL_FAIL(def_->getFullName(),
                 "@qelstr_CAudioProcessBypassStateDef_init_InvalidParam Invalid parameter name specified.");
    }
    return {};
}

bool CAudioBypassState::evaluate(const CAudioProcessSlots& slots, int group)
{
    const int readGroup = def_->isGroup0() ? 0 : group;
    const double value = slots.stateValue(slot_, readGroup);
    const double andValue = andSlot_ < 0 ? 0.0 : slots.stateValue(andSlot_, readGroup);
    const bool wasActive = isActive_;
    isActive_ = def_->isActive(value, andValue);
    return isActive_ != wasActive;
}

} // namespace qel
