// Where state switches join.
#include "CViewStateSwitchObject.h"

#include "CViewStateSwitch.h"

namespace qel {

namespace {

CString textOf(const CAttrMap& parameters, const char* name)
{
    const auto entry = parameters.find(name);
    return entry == parameters.end() ? CString() : entry->second.toString();
}

} // namespace

void CViewStateSwitchObject::buildClassInfo(CClassInfo& info)
{
    using Self = CViewStateSwitchObject;
    CObject::buildClassInfo(info);
    info.handleEvent<&Self::eventRegister>(kRegister);
    info.handleEvent<&Self::eventUnregister>(kUnregister);
    info.handleEvent<&Self::eventUpdate>(kUpdate);
}

CError CViewStateSwitchObject::eventRegister(const CAttrMap& parameters)
{
    unions_[textOf(parameters, "union-id")].try_emplace(textOf(parameters, "switch"));
    return {};
}

CError CViewStateSwitchObject::eventUnregister(const CAttrMap& parameters)
{
    const CString id = textOf(parameters, "union-id");
    unions_[id].erase(textOf(parameters, "switch"));
    return applyUnion(id);
}

CError CViewStateSwitchObject::eventUpdate(const CAttrMap& parameters)
{
    const CString id = textOf(parameters, "union-id");
    Members& members = unions_[id];
    const auto member = members.find(textOf(parameters, "switch"));
    if (member == members.end()) {
        QEL_FAIL(getFullName(), "@qelstr_CViewStateSwitchObject_eventUpdate_Id Invalid ID of view disabler.");
    }
    member->second = textOf(parameters, "is-active") == "true";
    return applyUnion(id);
}

CError CViewStateSwitchObject::applyUnion(const CString& id)
{
    const Members members = unions_[id]; // what is set may end switches
    bool isActive = false;
    for (const auto& [name, isMemberActive] : members) {
        isActive = isActive || isMemberActive.value_or(false);
    }
    CError first;
    for (const auto& [name, isMemberActive] : members) {
        auto* const member = isReleased() ? nullptr : dynamic_cast<CViewStateSwitch*>(findObject(name));
        CError error = member ? member->apply(isActive) : CError();
        if (!first) {
            first = std::move(error);
        }
    }
    return first;
}

} // namespace qel
