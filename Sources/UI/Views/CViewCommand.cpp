// What a view does when an event happens.
#include "CViewCommand.h"

#include "CSharedAttribute.h"
#include "CViewBaseCtlEvents.h"

namespace qel {

namespace {

// What an action works on. It is looked up before any action runs and held to the end, since an earlier
// action may take the command out of the tree (a pop-up that closes, then sets a state of its opener); what
// an earlier action makes is found when it is needed.
class CTarget
{
public:
    CTarget(CObject& from, CString path, CObject* byDefault)
        : from_(from), path_(std::move(path)), object_(byDefault)
    {
        if (!path_.isEmpty()) {
            object_ = from_.findObject(path_);
        }
        hold();
    }

    CObject* get()
    {
        if (!object_ && !from_.isReleased()) {
            object_ = from_.findObject(path_);
            hold();
        }
        return object_ && !object_->isReleased() ? object_ : nullptr;
    }

private:
    void hold()
    {
        if (object_) {
            hold_.emplace(*object_);
        }
    }

    CObject& from_;
    CString path_;
    CObject* object_;
    std::optional<CObject::CHold> hold_;
};

} // namespace

void CViewCommand::buildClassInfo(CClassInfo& info)
{
    using Self = CViewCommand;
    CObject::buildClassInfo(info);
    info.bind<&Self::onEvent_>("on-event", "");
    info.bind<&Self::conditionSet_>("condition-state-set", "");
    info.bind<&Self::conditionUnset_>("condition-state-unset", "");
    info.bind<&Self::runEvent_>("run-event", "");
    info.bind<&Self::runEventTarget_>("run-event-target", "");
    info.bind<&Self::runEventParams_>("run-event-params", "");
    info.bind<&Self::isForwardingParams_>("run-event-forward-params", false);
    info.bind<&Self::setState_>("set-state", "");
    info.bind<&Self::unsetState_>("unset-state", "");
    info.bind<&Self::toggleState_>("toggle-state", "");
    info.bind<&Self::stateTarget_>("state-target", "");
    info.bind<&Self::toggleAttr_>("toggle-attr", "");
    info.bind<&Self::resetSharedAttr_>("reset-shared-attr", "");
}

CError CViewCommand::init()
{
    QEL_TRY(CObject::init(), getFullName());
    view_ = dynamic_cast<CViewBaseCtlEvents*>(getParent());
    if (!view_) {
        QEL_FAIL(getFullName(), "@qelstr_CViewCommand_init_NoView Parent object is not a view.");
    }
    view_->addCommand(*this);
    return {};
}

void CViewCommand::release()
{
    if (view_) {
        view_->removeCommand(*this);
    }
    CObject::release();
}

bool CViewCommand::isConditionMet() const
{
    return (conditionSet_.isEmpty() || view_->isStateActive(conditionSet_)) &&
           (conditionUnset_.isEmpty() || !view_->isStateActive(conditionUnset_));
}

CError CViewCommand::run(const CAttrMap& parameters)
{
    if (!isConditionMet()) {
        return {};
    }
    const CHold hold(*this);
    const CHold viewHold(*view_);
    CTarget eventTarget(*this, runEventTarget_, view_);
    CTarget stateTarget(*this, stateTarget_, view_);
    CTarget sharedTarget(*this, resetSharedAttr_, nullptr);
    CError first;
    if (!runEvent_.isEmpty()) {
        collectError(first, runEvent(eventTarget.get(), parameters));
    }
    if (!setState_.isEmpty() || !unsetState_.isEmpty() || !toggleState_.isEmpty()) {
        collectError(first, changeStates(stateTarget.get()));
    }
    if (!toggleAttr_.isEmpty()) {
        collectError(first, toggleAttribute());
    }
    if (!resetSharedAttr_.isEmpty()) {
        collectError(first, resetShared(sharedTarget.get()));
    }
    return first;
}

CError CViewCommand::runEvent(CObject* target, const CAttrMap& parameters)
{
    // A window may go with its opener, whom it tells of that.
    if (!target && view_->isReleased()) {
        return {};
    }
    if (!target) {
        QEL_FAIL(getFullName(), "@qelstr_CViewCommand_run_NoEventTarget Unable to locate event target '%1'.",
                 runEventTarget_);
    }
    CAttrMap sent;
    if (isForwardingParams_) {
        sent = parameters;
    }
    if (!runEventParams_.isEmpty()) {
        const CObject* child = findChild(runEventParams_);
        if (!child) {
            child = view_->findChild(runEventParams_);
        }
        if (!child) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CViewCommand_run_NoParams Unable to locate event parameters '%1'.",
                     runEventParams_);
        }
        for (const auto& [key, value] : child->getAttributes()) {
            if (!(key == "name") && !(key == "full-name")) {
                sent[key] = value;
            }
        }
    }
    QEL_TRY(sendEvent(*target, runEvent_, sent), getFullName());
    return {};
}

CError CViewCommand::changeStates(CObject* target)
{
    auto* const view = dynamic_cast<CViewBaseState*>(target);
    if (!view) {
        // The command's own view may have ended meanwhile, which is no fault.
        if (stateTarget_.isEmpty()) {
            return {};
        }
        QEL_FAIL(getFullName(), "@qelstr_CViewCommand_run_NoStateTarget Unable to locate state target '%1'.",
                 stateTarget_);
    }
    CError first;
    if (!setState_.isEmpty()) {
        collectError(first, view->setState(setState_));
    }
    if (!unsetState_.isEmpty()) {
        collectError(first, view->unsetState(unsetState_));
    }
    if (!toggleState_.isEmpty()) {
        collectError(first, view->toggleState(toggleState_));
    }
    return first;
}

CError CViewCommand::toggleAttribute()
{
    if (view_->isReleased()) {
        return {};
    }
    QEL_TRY(view_->setAttribute(toggleAttr_, CAttrValue(!view_->getAttrBool(toggleAttr_)), true),
            getFullName());
    return {};
}

CError CViewCommand::resetShared(CObject* target)
{
    auto* const shared = dynamic_cast<CSharedAttribute*>(target);
    if (!shared) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CViewCommand_run_NoSharedAttr Unable to locate shared attribute '%1'.",
                 resetSharedAttr_);
    }
    QEL_TRY(shared->reset(), getFullName());
    return {};
}

} // namespace qel
