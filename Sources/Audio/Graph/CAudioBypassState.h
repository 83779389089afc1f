// A bypass state of a running compound.
#pragma once

#include "CAudioProcessSlots.h"
#include "Definitions/CAudioProcessBypassStateDef.h"

namespace qel {

// Follows the parameters that its definition names. While it is active, what bears its number is out of the
// graph.
class CAudioBypassState
{
public:
    explicit CAudioBypassState(const CAudioProcessBypassStateDef& def) : def_(&def) {}

    // Ties the parameters, named relative to the process, to extra slots of it. Fails if the instance has no
    // such parameter.
    CError bind(CAudioProcessSlots& slots, const CString& processName, CAudioParamCollector& params);
    // Audio thread. True if the state has changed.
    bool evaluate(const CAudioProcessSlots& slots, int group);

    int id() const { return def_->id(); }
    bool isActive() const { return isActive_; }

private:
    CError bindOne(CAudioProcessSlots& slots, const CString& processName, CAudioParamCollector& params,
                   const CString& name, int& outSlot);

    const CAudioProcessBypassStateDef* def_;
    int slot_ = -1;
    int andSlot_ = -1;
    bool isActive_ = false;
};

} // namespace qel
