// The memory of a subtree of parameters: the host's programs, master reset, and A/B.
#include "CAudioParamRegistry.h"

#include "CAudioParamRegistryBatch.h"

namespace qel {

std::unique_lock<CCriticalSection> CAudioParamRegistry::lockUndo()
{
    return undo_ ? std::unique_lock<CCriticalSection>(undo_->getLock())
                 : std::unique_lock<CCriticalSection>();
}

// With the undo store's lock.
void CAudioParamRegistry::addStep(CAudioParamUndoStep& step)
{
    if (undo_) {
        undo_->addStep(std::move(step), true);
    }
}

std::int32_t CAudioParamRegistry::getProgramCount()
{
    const CLock lock(bankLock_);
    return programs_.getCount();
}

std::int32_t CAudioParamRegistry::getProgram()
{
    const CLock lock(bankLock_);
    return programs_.getIndex();
}

CString CAudioParamRegistry::getProgramName(std::int32_t index)
{
    const CLock lock(bankLock_);
    return programs_.hasIndex(index) ? programs_.get(index).getTitle() : CString();
}

CString CAudioParamRegistry::getCurrentProgramName()
{
    const CLock lock(bankLock_);
    return programs_.getCurrent().getTitle();
}

std::vector<CString> CAudioParamRegistry::listPresets(bool fromROM)
{
    const CLock lock(bankLock_);
    const CAudioPresetBank& bank = fromROM ? romBank_ : isMaster_ ? programs_.getBank() : storedList_;
    std::vector<CString> names;
    for (std::int32_t i = 0; i < bank.getCount(); ++i) {
        names.push_back(bank.get(i).getTitle());
    }
    return names;
}

CError CAudioParamRegistry::snapshotProgram()
{
    return snapshot(programs_.getCurrent(), false, false, kAllGroups);
}

// Puts a title on the current program and into the parameter that shows it.
void CAudioParamRegistry::renameCurrent(const CString& title, CAudioParamContext& context)
{
    programs_.getCurrent().setName(CAudioPreset::makeName(id_, title));
    showName(title, 0, context);
}

CError CAudioParamRegistry::startProgram()
{
    if (!isMaster_) {
        return {};
    }
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    const CAudioParamContext::Scope scope(context);
    const CLock lock(bankLock_);
    QEL_TRY(applyWithName(programs_.getCurrent(), context, false, kAllGroups), getFullName());
    return {};
}

CError CAudioParamRegistry::setProgram(std::int32_t index, CBridge* sender)
{
    if (!isMaster_) {
        return {};
    }
    collector_->takeChangesFromAudio();
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        if (!programs_.hasIndex(index) || index == programs_.getIndex()) {
            return {};
        }
        const auto undoLock = lockUndo();
        QEL_TRY(goToProgram(index, context), getFullName());
    }
    updateBridges(sender);
    return {};
}

// A bank of the host can hold a program that cannot be read: then all stays as it is.
CError CAudioParamRegistry::goToProgram(std::int32_t index, CAudioParamContext& context)
{
    QEL_TRY(params_.check(programs_.get(index), false, false, kAllGroups), getFullName());
    QEL_TRY(snapshotProgram(), getFullName());
    programs_.goTo(index);
    return applyWithName(programs_.getCurrent(), context, false, kAllGroups);
}

void CAudioParamRegistry::setProgramName(std::int32_t index, const CString& name, bool fromUser,
                                         CBridge* sender)
{
    CAudioParamUndoStep step("Program name change", this);
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const CString fullName = CAudioPreset::makeName(id_, name);
        if (!isMaster_ || !programs_.hasIndex(index) || programs_.get(index).getName() == fullName) {
            return;
        }
        if (index == programs_.getIndex()) {
            const auto undoLock = lockUndo();
            context.recorder = undo_ && fromUser ? &step : nullptr;
            renameCurrent(name, context);
            addStep(step);
        } else {
            programs_.get(index).setName(fullName);
        }
    }
    updateBridges(sender);
}

CError CAudioParamRegistry::takeSessionBank(const CAudioPresetBank& bank, CAudioParamContext& context,
                                            bool fromHost)
{
    QEL_TRY(params_.check(programs_.currentOf(bank), false, fromHost, kAllGroups), getFullName());
    programs_.replaceAll(bank);
    QEL_TRY(applyWithName(programs_.getCurrent(), context, fromHost, kAllGroups), getFullName());
    params_.forEachHostOnly([this](const CString& key, const CAudioParam&) {
        for (std::int32_t i = 0; i < programs_.getCount(); ++i) {
            programs_.get(i).removeEntry(key);
        }
    });
    return {};
}

// --- one program

CError CAudioParamRegistry::addProgram(std::int32_t index, CInputStream& stream)
{
    CAudioPreset preset;
    QEL_TRY(readPreset(stream, preset), getFullName());
    if (isMaster_) {
        const CLock lock(bankLock_);
        programs_.insert(index, std::move(preset));
    }
    updateBridges();
    return {};
}

CError CAudioParamRegistry::removeProgram(std::int32_t index)
{
    if (!isMaster_) {
        return {};
    }
    collector_->takeChangesFromAudio();
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        QEL_TRY(checkIndex(programs_.getBank(), index), getFullName());
        if (programs_.getCount() == 1) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CAudioParamRegistry_removeProgram_Last The last program cannot be deleted.");
        }
        if (index == programs_.getIndex()) {
            QEL_TRY(goToProgram(programs_.hasIndex(index + 1) ? index + 1 : index - 1, context),
                    getFullName());
        }
        programs_.remove(index);
    }
    updateBridges();
    return {};
}

CError CAudioParamRegistry::replaceProgram(std::int32_t index, CInputStream& stream)
{
    if (!isMaster_) {
        return {};
    }
    CAudioPreset preset;
    QEL_TRY(readPreset(stream, preset), getFullName());
    bool isCurrent = false;
    {
        const CLock lock(bankLock_);
        QEL_TRY(checkIndex(programs_.getBank(), index), getFullName());
        isCurrent = index == programs_.getIndex();
        if (!isCurrent) {
            programs_.replace(index, std::move(preset));
        }
    }
    if (isCurrent) {
        return activate(preset, false, kAllGroups, stepNameFor(kAllGroups));
    }
    updateBridges();
    return {};
}

CError CAudioParamRegistry::moveProgram(std::int32_t from, std::int32_t to)
{
    if (isMaster_) {
        const CLock lock(bankLock_);
        QEL_TRY(checkIndex(programs_.getBank(), from), getFullName());
        QEL_TRY(checkIndex(programs_.getBank(), to), getFullName());
        programs_.move(from, to);
    }
    updateBridges();
    return {};
}

void CAudioParamRegistry::masterReset()
{
    collector_->takeChangesFromAudio();
    CAudioParamUndoStep step("Master reset", this);
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        const CLock mapLock(params_.getLock());
        CAudioParamRegistryBatch batch(*collector_, context);
        refreshInitialValues();
        context.recorder = undo_ ? &step : nullptr;
        params_.reset(context);
        if (isMaster_) {
            renameCurrent(CAudioParamPrograms::kDefaultTitle, context);
        }
        batch.submit();
        addStep(step);
    }
    updateBridges();
}

CError CAudioParamRegistry::abStore()
{
    if (!isMaster_) {
        return {};
    }
    collector_->takeChangesFromAudio();
    const CLock lock(bankLock_);
    const auto undoLock = lockUndo();
    CAudioPreset present;
    QEL_TRY(snapshot(present, true, false, kAllGroups), getFullName());
    programs_.storeOther(std::move(present));
    return {};
}

CError CAudioParamRegistry::abSwap()
{
    if (!isMaster_) {
        return {};
    }
    collector_->takeChangesFromAudio();
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        CAudioPreset present;
        QEL_TRY(snapshot(present, true, false, kAllGroups), getFullName());
        if (const CAudioPreset* other = programs_.getOther()) {
            QEL_TRY(applyPreset(*other, false, context), getFullName());
        }
        programs_.swapWithOther(std::move(present));
    }
    updateBridges();
    return {};
}

bool CAudioParamRegistry::isB()
{
    const CLock lock(bankLock_);
    return programs_.isB();
}

} // namespace qel
