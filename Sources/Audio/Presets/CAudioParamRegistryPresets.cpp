// The memory of a subtree of parameters: snapshots, and presets and banks as streams.
#include "CAudioParamRegistry.h"

#include "CAudioParamRegistryBatch.h"
#include "Streams/CMemoryReader.h"

#include <algorithm>

namespace qel {

CError CAudioParamRegistry::storePreset(CAudioPreset& preset, bool withName, bool withPersistent,
                                        std::int32_t group)
{
    collector_->takeChangesFromAudio();
    const CLock lock(bankLock_);
    QEL_TRY(snapshot(preset, withName, withPersistent, group), getFullName());
    return {};
}

CError CAudioParamRegistry::snapshot(CAudioPreset& preset, bool withName, bool withPersistent,
                                     std::int32_t group)
{
    QEL_TRY(params_.store(preset, withPersistent, group), getFullName());
    if (withName && isMaster_) {
        preset.setName(programs_.getCurrent().getName());
    }
    return {};
}

CError CAudioParamRegistry::applyPreset(const CAudioPreset& preset, bool partial, CAudioParamContext& context,
                                        bool withPersistent, std::int32_t group)
{
    const CAudioParamContext::Scope scope(context);
    // Before the map's: a parameter that gets its declaration here tells its registries at once.
    const CLock lock(bankLock_);
    QEL_TRY(params_.apply(preset, partial, context, withPersistent, group), getFullName());
    return {};
}

// The same, and the name goes where it is shown.
CError CAudioParamRegistry::applyWithName(const CAudioPreset& preset, CAudioParamContext& context,
                                          bool withPersistent, std::int32_t group)
{
    CAudioParamRegistryBatch batch(*collector_, context);
    QEL_TRY(params_.apply(preset, false, context, withPersistent, group), getFullName());
    if (isMaster_ && group < 0) {
        renameCurrent(preset.getTitle(), context);
    } else if (!isMaster_) {
        showName(preset.getTitle(), group, context);
    }
    batch.submit();
    return {};
}

// Of what belongs to a group only that group shows it.
void CAudioParamRegistry::showName(const CString& title, std::int32_t group, CAudioParamContext& context)
{
    if (presetNameParam_.isEmpty()) {
        return;
    }
    CAudioParam& nameParam = collector_->getParam(presetNameParam_);
    const std::int32_t first = std::max(group, 0);
    const std::int32_t last = group < 0 && !isMaster_ ? params_.countGroups() - 1 : first;
    for (std::int32_t i = first; i <= last; ++i) {
        if (nameParam.hasInfo() && nameParam.getString(i, 0) != title) {
            nameParam.setString(i, 0, title, context);
        }
    }
}

CError CAudioParamRegistry::checkIndex(const CAudioPresetBank& bank, std::int32_t index) const
{
    if (!bank.hasIndex(index)) {
        QEL_FAIL(
            getFullName(),
            "@qelstr_CAudioParamRegistry_acquirePreset_PresetIndexError Invalid preset index %1 specified.",
            index);
    }
    return {};
}

CError CAudioParamRegistry::acquirePreset(bool fromROM, std::int32_t index, std::int32_t group,
                                          COutputStream& stream, bool withPersistent)
{
    collector_->takeChangesFromAudio();
    const CLock lock(bankLock_);
    if (!isMaster_ || (!fromROM && index == kCurrentProgram)) {
        // The program itself never holds what only the host saves, or changing programs would change it.
        if (isMaster_ && group < 0) {
            QEL_TRY(snapshotProgram(), getFullName());
        }
        CAudioPreset preset(CAudioPreset::makeName(id_, {}));
        QEL_TRY(snapshot(preset, true, withPersistent, group), getFullName());
        QEL_TRY(preset.save(stream), getFullName());
        return {};
    }
    const CAudioPresetBank& bank = fromROM ? romBank_ : programs_.getBank();
    QEL_TRY(checkIndex(bank, index), getFullName());
    QEL_TRY(bank.get(index).save(stream), getFullName());
    return {};
}

CError CAudioParamRegistry::acquireBank(bool fromROM, COutputStream& stream, bool withPersistent)
{
    if (!isMaster_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRegistry_acquirePreset_NonMasterRegistry Acquiring bank in a non-master "
                 "registry is an error.");
    }
    collector_->takeChangesFromAudio();
    const CLock lock(bankLock_);
    if (fromROM) {
        QEL_TRY(romBank_.save(stream), getFullName());
        return {};
    }
    QEL_TRY(snapshotProgram(), getFullName());
    CAudioPresetBank bank = programs_.getBank();
    if (withPersistent) {
        QEL_TRY(addHostOnly(bank), getFullName());
    }
    QEL_TRY(bank.save(stream), getFullName());
    return {};
}

// Into every program, since whoever loads the bank may be on another one.
CError CAudioParamRegistry::addHostOnly(CAudioPresetBank& bank)
{
    CError error;
    params_.forEachHostOnly([&](const CString& key, const CAudioParam& param) {
        for (std::int32_t i = 0; i < bank.getCount() && !error; ++i) {
            error = params_.storeParam(bank.get(i), key, param, true, kAllGroups);
        }
    });
    return error;
}

CError CAudioParamRegistry::readPreset(CInputStream& stream, CAudioPreset& out) const
{
    QEL_TRY(out.load(stream), getFullName());
    if (out.getId() != id_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRegistry_activatePreset_IncompatiblePreset Incompatible preset.");
    }
    return {};
}

CError CAudioParamRegistry::activatePreset(CInputStream& stream, bool fromHost, std::int32_t group)
{
    CAudioPreset preset;
    QEL_TRY(readPreset(stream, preset), getFullName());
    QEL_TRY(activate(preset, fromHost, group, stepNameFor(group)), getFullName());
    return {};
}

CError CAudioParamRegistry::activateROMPreset(std::int32_t index)
{
    CAudioPreset preset;
    {
        const CLock lock(bankLock_);
        QEL_TRY(checkIndex(romBank_, index), getFullName());
        preset = romBank_.get(index);
    }
    QEL_TRY(activate(preset, false, kAllGroups, "ROM preset activate"), getFullName());
    return {};
}

CString CAudioParamRegistry::stepNameFor(std::int32_t group) const
{
    if (group < 0) {
        return presetNaming_ + " activate";
    }
    CString groupName = CString::number(std::int64_t{group} + 1);
    if (!groupNamesParam_.isEmpty()) {
        const CAudioParam& names = collector_->getParam(groupNamesParam_);
        if (names.hasInfo()) {
            groupName = names.getString(0, group);
        }
    }
    return presetNaming_ + " (" + groupName + ") activate";
}

CError CAudioParamRegistry::activate(const CAudioPreset& preset, bool fromHost, std::int32_t group,
                                     const CString& stepName)
{
    collector_->takeChangesFromAudio(); // or a step would hold values of before
    CAudioParamUndoStep step(stepName, this);
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        context.recorder = undo_ && !fromHost ? &step : nullptr;
        QEL_TRY(applyWithName(preset, context, fromHost, group), getFullName());
        addStep(step);
    }
    updateBridges();
    return {};
}

CError CAudioParamRegistry::activateBank(CInputStream& stream, bool fromHost)
{
    if (!isMaster_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRegistry_activateBank_NonMasterRegistry Activating bank in a non-master "
                 "registry is an error.");
    }
    CAudioPresetBank bank;
    QEL_TRY(bank.load(stream), getFullName());
    if (!bank.isEmpty() && bank.get(0).getId() != id_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRegistry_activateBank_IncompatibleBank Incompatible bank.");
    }
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        QEL_TRY(takeSessionBank(bank, context, fromHost), getFullName());
    }
    updateBridges();
    return {};
}

} // namespace qel
