// Where state switches join.
#pragma once

#include "CObject.h"

namespace qel {

// Tag `view-state-switch-object`, made under the object that switches name as their union. Of the switches
// with one "union-id", any one that is active makes all of them active: a view with several reasons to be
// disabled is enabled when none is left.
//
// Parameters of all events: "union-id", "switch" (full name), "is-active".
class CViewStateSwitchObject : public CObject
{
public:
    static constexpr const char* kRegister = "view-state-switch-register";
    static constexpr const char* kUnregister = "view-state-switch-unregister";
    static constexpr const char* kUpdate = "view-state-switch-update";

    static void buildClassInfo(CClassInfo& info);

    virtual CError eventRegister(const CAttrMap& parameters);
    virtual CError eventUnregister(const CAttrMap& parameters);
    // Fails for a switch that is not registered.
    virtual CError eventUpdate(const CAttrMap& parameters);

private:
    // Full names of switches, and whether each is active; none until it has said so.
    using Members = CStringMap<std::optional<bool>>;

    CError applyUnion(const CString& id);

    CStringMap<Members> unions_; // by id
};

} // namespace qel
