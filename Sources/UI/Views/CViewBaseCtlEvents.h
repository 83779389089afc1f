// The events of a view.
#pragma once

#include "CViewBaseState.h"

namespace qel {

class CViewCommand;

// Events reach a view through its class (what the class declares with handleEvent()) and through its
// children of tag "ui:view-command". A view that is disabled, itself or by a view above it, still takes the
// pointer and fires nothing.
class CViewBaseCtlEvents : public CViewBaseState
{
public:
    CError init() override;

    // Runs the commands of this view for the event, in the order of the tree. One that fails stops no other:
    // the first error is returned, further ones are traced. Handlers may release anything, this view too.
    CError fireEvent(const CString& name, const CAttrMap& parameters) override;
    // The event comes from outside: the commands run first, then the class's own handler, which may end the
    // view.
    CError receiveEvent(const CString& name, const CAttrMap& parameters);

    // True if the class or a command of this view does something for the event.
    bool handlesEvent(const CString& name) const;

    // --- pointer events, called by the window; the parameters are those of the event

    virtual CError onMouseCancel(const CAttrMap& parameters);
    virtual CError onMouseCancelR(const CAttrMap& parameters);
    virtual CError onMouseEnter(const CAttrMap& parameters);
    virtual CError onMouseExit(const CAttrMap& parameters);
    virtual CError onMouseMove(const CAttrMap& parameters);
    virtual CError onMousePress(const CAttrMap& parameters);
    virtual CError onMousePressR(const CAttrMap& parameters);
    virtual CError onMouseRelease(const CAttrMap& parameters);
    virtual CError onMouseReleaseR(const CAttrMap& parameters);

    // True if "is-disabled" is true here or on a view above.
    bool actsDisabled() const { return actsDisabled_; }
    CError attrIsDisabled() override;

    // --- for commands
    void addCommand(CViewCommand& command) { commands_.push_back(&command); }
    void removeCommand(CViewCommand& command) { std::erase(commands_, &command); }

protected:
    virtual void onDisabledChanged() { markLook(); }

private:
    CError firePointerEvent(const char* name, const CAttrMap& parameters);
    void updateDisabled();

    std::vector<CViewCommand*> commands_; // in the order of the tree
    bool actsDisabled_ = false;
};

// An event for any object: for a view as above, otherwise for the class's own handler, if it has one.
CError sendEvent(CObject& target, const CString& name, const CAttrMap& parameters);

} // namespace qel
