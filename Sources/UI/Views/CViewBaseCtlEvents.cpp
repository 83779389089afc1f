// The events of a view.
#include "CViewBaseCtlEvents.h"

#include "CViewCommand.h"
#include "ViewTree.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kHover = "hover";

CError callOwnHandler(CObject& target, const CString& name, const CAttrMap& parameters)
{
    const CEventHandler* const handler = target.getClassInfo().eventHandler(name);
    return handler && !target.isReleased() ? (*handler)(target, parameters) : CError();
}

} // namespace

CError CViewBaseCtlEvents::init()
{
    QEL_TRY(CViewBaseState::init(), getFullName());
    const auto* above = dynamic_cast<const CViewBaseCtlEvents*>(getParentView());
    actsDisabled_ = isDisabled() || (above && above->actsDisabled_);
    return {};
}

// --- events

CError CViewBaseCtlEvents::fireEvent(const CString& name, const CAttrMap& parameters)
{
    if (commands_.empty()) {
        return {};
    }
    const CHold hold(*this);
    const std::vector<CViewCommand*> commands = commands_;
    CError first;
    for (CViewCommand* const command : commands) {
        // A command may have ended others, or the view with all of them.
        if (std::ranges::find(commands_, command) != commands_.end() && command->isFor(name)) {
            collectError(first, command->run(parameters));
        }
    }
    return first;
}

CError CViewBaseCtlEvents::receiveEvent(const CString& name, const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = fireEvent(name, parameters);
    collectError(first, callOwnHandler(*this, name, parameters));
    return first;
}

bool CViewBaseCtlEvents::handlesEvent(const CString& name) const
{
    const auto isFor = [&](const CViewCommand* command) { return command->isFor(name); };
    return getClassInfo().eventHandler(name) || std::ranges::any_of(commands_, isFor);
}

CError sendEvent(CObject& target, const CString& name, const CAttrMap& parameters)
{
    if (auto* view = dynamic_cast<CViewBaseCtlEvents*>(&target)) {
        return view->receiveEvent(name, parameters);
    }
    const CObject::CHold hold(target);
    return callOwnHandler(target, name, parameters);
}

// --- pointer

CError CViewBaseCtlEvents::firePointerEvent(const char* name, const CAttrMap& parameters)
{
    return actsDisabled_ ? CError() : fireEvent(name, parameters);
}

CError CViewBaseCtlEvents::onMouseCancel(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-cancel", parameters);
}

CError CViewBaseCtlEvents::onMouseCancelR(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-cancel-r", parameters);
}

CError CViewBaseCtlEvents::onMouseEnter(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = firePointerEvent("mouse-enter", parameters);
    // Also while disabled, so that the state is right once the view is enabled under the pointer.
    collectError(first, setState(kHover));
    return first;
}

CError CViewBaseCtlEvents::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = firePointerEvent("mouse-exit", parameters);
    collectError(first, unsetState(kHover));
    return first;
}

CError CViewBaseCtlEvents::onMouseMove(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-move", parameters);
}

CError CViewBaseCtlEvents::onMousePress(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-press", parameters);
}

CError CViewBaseCtlEvents::onMousePressR(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-press-r", parameters);
}

CError CViewBaseCtlEvents::onMouseRelease(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-release", parameters);
}

CError CViewBaseCtlEvents::onMouseReleaseR(const CAttrMap& parameters)
{
    return firePointerEvent("mouse-release-r", parameters);
}

// --- disabled views

CError CViewBaseCtlEvents::attrIsDisabled()
{
    if (getInitState() != InitState::kCreated && !isReleased()) {
        updateDisabled();
    }
    return {};
}

void CViewBaseCtlEvents::updateDisabled()
{
    const auto* above = dynamic_cast<const CViewBaseCtlEvents*>(getParentView());
    const bool actsDisabled = isDisabled() || (above && above->actsDisabled_);
    if (actsDisabled != actsDisabled_) {
        actsDisabled_ = actsDisabled;
        onDisabledChanged();
        forEachViewBelow<CViewBaseCtlEvents>(*this, [](CViewBaseCtlEvents& view) { view.updateDisabled(); });
    }
}

} // namespace qel
