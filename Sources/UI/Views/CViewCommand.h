// What a view does when an event happens.
#pragma once

#include "CObject.h"

namespace qel {

class CViewBaseCtlEvents;

// Tag `ui:view-command`, a child of a view. When "on-event" fires on the view and the conditions hold, the
// actions that are given run in this order; one that fails stops no other. Paths start at the command.
//
//     condition-state-set, condition-state-unset   a state that must be active on the view, or must not
//     run-event, run-event-target                  an event for another object, or for the view
//     run-event-params                             name of a child, here or of the view, whose attributes are
//                                                  the parameters of that event
//     run-event-forward-params                     those of the event that happened are passed on, too
//     set-state, unset-state, toggle-state         a state of the view at "state-target", or of the view
//     toggle-attr                                  a boolean attribute of the view
//     reset-shared-attr                            path of a shared attribute that gets its default
class CViewCommand : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails if the parent is no view.
    CError init() override;
    void release() override;

    bool isFor(const CString& event) const { return event == onEvent_; }
    // The event has happened, with these parameters. May release the command and its view.
    CError run(const CAttrMap& parameters);

private:
    bool isConditionMet() const;
    CError runEvent(CObject* target, const CAttrMap& parameters);
    CError changeStates(CObject* target);
    CError toggleAttribute();
    CError resetShared(CObject* target);

    CViewBaseCtlEvents* view_ = nullptr;

    // Bound attributes.
    CString onEvent_;
    CString conditionSet_;
    CString conditionUnset_;
    CString runEvent_;
    CString runEventTarget_;
    CString runEventParams_;
    bool isForwardingParams_ = false;
    CString setState_;
    CString unsetState_;
    CString toggleState_;
    CString stateTarget_;
    CString toggleAttr_;
    CString resetSharedAttr_;
};

} // namespace qel
