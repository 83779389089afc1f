// The memory of a subtree of parameters: the host's programs, master reset, and A/B.
#include "CAudioParamRegistry.h"

#include "CAudioParamRegistryBatch.h"

namespace qel {

namespace {

constexpr const char* kDefaultTitle = "Default";

} // namespace

std::unique_lock<CCriticalSection> CAudioParamRegistry::lockUndo()
{
    return undo_ ? std::unique_lock<CCriticalSection>(undo_->getLock())
                 : std::unique_lock<CCriticalSection>();
}

CAudioParamRegistry::HistoryPtr CAudioParamRegistry::swapHistory(HistoryPtr history)
{
    return undo_ ? undo_->swapHistory(std::move(history)) : nullptr;
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
    return sessionBank_.getCount();
}

std::int32_t CAudioParamRegistry::getProgram()
{
    const CLock lock(bankLock_);
    return program_;
}

CString CAudioParamRegistry::getProgramName(std::int32_t index)
{
    const CLock lock(bankLock_);
    return sessionBank_.hasIndex(index) ? sessionBank_.get(index).getTitle() : CString();
}

CString CAudioParamRegistry::getCurrentProgramName()
{
    const CLock lock(bankLock_);
    return getProgramName(program_);
}

std::vector<CString> CAudioParamRegistry::listPresets(bool fromROM)
{
    const CLock lock(bankLock_);
    const CAudioPresetBank& bank = fromROM ? romBank_ : isMaster_ ? sessionBank_ : storedList_;
    std::vector<CString> names;
    for (std::int32_t i = 0; i < bank.getCount(); ++i) {
        names.push_back(bank.get(i).getTitle());
    }
    return names;
}

CError CAudioParamRegistry::snapshotProgram()
{
    return snapshot(currentProgram(), false, false, kAllGroups);
}

// Puts a title on the current program and into the parameter that shows it.
void CAudioParamRegistry::renameCurrent(const CString& title, CAudioParamContext& context)
{
    currentProgram().setName(CAudioPreset::makeName(id_, title));
    if (presetNameParam_.isEmpty()) {
        return;
    }
    CAudioParam& nameParam = collector_->getParam(presetNameParam_);
    if (nameParam.hasInfo() && nameParam.getString(0, 0) != title) {
        nameParam.setString(0, 0, title, context);
    }
}

CError CAudioParamRegistry::applyWithName(const CAudioPreset& preset, CAudioParamContext& context,
                                          bool withPersistent)
{
    CAudioParamRegistryBatch batch(*collector_, context);
    QEL_TRY(applyPreset(preset, false, context, withPersistent), getFullName());
    renameCurrent(preset.getTitle(), context);
    batch.submit();
    return {};
}

CError CAudioParamRegistry::startProgram()
{
    if (!isMaster_) {
        return {};
    }
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    const CAudioParamContext::Scope scope(context);
    const CLock lock(bankLock_);
    QEL_TRY(applyWithName(currentProgram(), context, false), getFullName());
    return {};
}

CError CAudioParamRegistry::setProgram(std::int32_t index, CBridge* sender)
{
    if (!isMaster_) {
        return {};
    }
    collector_->takeChangesFromAudio();
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    CError error;
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        if (!sessionBank_.hasIndex(index) || index == program_) {
            return {};
        }
        const auto undoLock = lockUndo();
        QEL_TRY(snapshotProgram(), getFullName());
        const std::int32_t before = program_;
        moveToProgram(index);
        error = applyWithName(currentProgram(), context, false);
        if (error) {
            // A bank of the host can hold what cannot be read. The old program was stored just now, so it
            // can.
            moveToProgram(before);
            releaseError(applyWithName(currentProgram(), context, false));
        }
    }
    updateBridges(sender);
    QEL_TRY(std::move(error), getFullName());
    return {};
}

// With the undo store's lock. The values stay as they are.
void CAudioParamRegistry::moveToProgram(std::int32_t index)
{
    HistoryPtr present = swapHistory(std::move(histories_[static_cast<std::size_t>(index)]));
    histories_[static_cast<std::size_t>(program_)] = std::move(present);
    program_ = index;
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
        if (!sessionBank_.hasIndex(index) || sessionBank_.get(index).getName() == fullName) {
            return;
        }
        if (index == program_) {
            const auto undoLock = lockUndo();
            context.recorder = undo_ && fromUser ? &step : nullptr;
            renameCurrent(name, context);
            addStep(step);
        } else {
            sessionBank_.get(index).setName(fullName);
        }
    }
    updateBridges(sender);
}

CError CAudioParamRegistry::takeSessionBank(CAudioPresetBank& bank, CAudioParamContext& context,
                                            bool fromHost)
{
    const std::int32_t programBefore = program_;
    std::vector<HistoryPtr> historiesBefore = std::exchange(histories_, {});
    HistoryPtr presentBefore = swapHistory(nullptr);
    sessionBank_.takePresetsFrom(bank);
    if (sessionBank_.isEmpty()) {
        sessionBank_.add(CAudioPreset(CAudioPreset::makeName(id_, kDefaultTitle)));
    }
    histories_.resize(static_cast<std::size_t>(sessionBank_.getCount()));
    if (!sessionBank_.hasIndex(program_)) {
        program_ = 0;
    }
    CError error = applyWithName(currentProgram(), context, fromHost);
    if (error) {
        sessionBank_.takePresetsFrom(bank);
        histories_ = std::move(historiesBefore);
        swapHistory(std::move(presentBefore));
        program_ = programBefore;
        return error;
    }
    forEachHostOnly([this](const CString& key, const CAudioParam&) {
        for (std::int32_t i = 0; i < sessionBank_.getCount(); ++i) {
            sessionBank_.get(i).removeEntry(key);
        }
    });
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
        const CLock mapLock(mapLock_);
        CAudioParamRegistryBatch batch(*collector_, context);
        synchronise();
        refreshInitialValues();
        context.recorder = undo_ ? &step : nullptr;
        for (const auto& [key, param] : params_) {
            const CLock paramLock(param->getLock());
            if (param->hasInfo() && param->getInfo().isStorable) {
                param->reset(-1, -1, context);
            }
        }
        if (isMaster_) {
            renameCurrent(kDefaultTitle, context);
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
    Alternate stored;
    QEL_TRY(snapshot(stored.preset, true, false, kAllGroups), getFullName());
    stored.history = undo_ ? undo_->copyHistory() : nullptr;
    alternate_ = std::move(stored);
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
        QEL_TRY(exchangeAlternate(context), getFullName());
    }
    updateBridges();
    return {};
}

CError CAudioParamRegistry::exchangeAlternate(CAudioParamContext& context)
{
    CAudioPreset present;
    QEL_TRY(snapshot(present, true, false, kAllGroups), getFullName());
    if (!alternate_) {
        alternate_.emplace(Alternate{present, nullptr});
    }
    QEL_TRY(applyWithName(alternate_->preset, context, false), getFullName());
    alternate_->preset = std::move(present);
    alternate_->history = swapHistory(std::move(alternate_->history));
    return {};
}

} // namespace qel
