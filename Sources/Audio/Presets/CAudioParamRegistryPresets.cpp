// The memory of a subtree of parameters: snapshots, and presets and banks as streams.
#include "CAudioParamRegistry.h"

#include "CAudioParamRegistryBatch.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <set>

namespace qel {

namespace {

// Presets from before the parameter moved out of the routing carry it under the old key. Where both are
// missing it stays as it is: it belongs to the session's cost more than to the sound.
constexpr const char* kMovedParam = "plugin.modMain.oversampling";
constexpr const char* kMovedParamOldKey = "io-params.oversampling";

bool isStorable(const CAudioParam& param, bool withPersistent)
{
    const CLock lock(param.getLock());
    return param.hasInfo() &&
           (param.getInfo().isStorable || (withPersistent && param.getInfo().isPersistent));
}

// A parameter of one group for the whole instance takes no part in what is done to another group.
bool isOutside(const CAudioParam& param, std::int32_t group)
{
    const CLock lock(param.getLock());
    return group > 0 && param.hasInfo() && param.getInfo().isSingleGroup;
}

} // namespace

CError CAudioParamRegistry::storePreset(CAudioPreset& preset, bool withName, bool withPersistent,
                                        std::int32_t group)
{
    collector_->takeChangesFromAudio();
    const CLock lock(bankLock_);
    QEL_TRY(snapshot(preset, withName, withPersistent, group), getFullName());
    return {};
}

// With the bank's lock.
CError CAudioParamRegistry::snapshot(CAudioPreset& preset, bool withName, bool withPersistent,
                                     std::int32_t group)
{
    const CLock lock(mapLock_);
    synchronise();
    CAudioPreset stored(withName && isMaster_ ? currentProgram().getName() : preset.getName());
    for (const auto& [key, param] : params_) {
        QEL_TRY(storeParam(stored, key, *param, withPersistent, group), getFullName());
    }
    preset = std::move(stored);
    return {};
}

CError CAudioParamRegistry::storeParam(CAudioPreset& preset, const CString& key, const CAudioParam& param,
                                       bool withPersistent, std::int32_t group) const
{
    const CLock lock(param.getLock());
    if (!isStorable(param, withPersistent) || (group >= 0 && param.getCurrent().getCount(group) == 0)) {
        return {};
    }
    CMemoryWriteBuffer buffer;
    QEL_TRY(param.save(buffer, group), key);
    CByteBuffer block;
    buffer.copyTo(block);
    preset.setEntry(key, std::move(block));
    return {};
}

CError CAudioParamRegistry::applyPreset(const CAudioPreset& preset, bool partial, CAudioParamContext& context,
                                        bool withPersistent, std::int32_t group)
{
    const CAudioParamContext::Scope scope(context);
    // Before the map's: a parameter that gets its declaration here tells its registries at once.
    const CLock bankLock(bankLock_);
    const CLock mapLock(mapLock_);
    CAudioParamRegistryBatch batch(*collector_, context);
    synchronise();
    QEL_TRY(applyEntries(preset, partial, context, withPersistent, group), getFullName());
    batch.submit();
    return {};
}

CError CAudioParamRegistry::applyEntries(const CAudioPreset& preset, bool partial,
                                         CAudioParamContext& context, bool withPersistent, std::int32_t group)
{
    std::set<const CAudioParam*> visited;
    for (const auto& [key, block] : preset.getEntries()) {
        CAudioParam& param = paramOfKey(key);
        visited.insert(&param);
        QEL_TRY(loadEntry(param, block, context, withPersistent, group), key);
    }
    if (partial) {
        return {};
    }
    for (const auto& [key, param] : params_) {
        if (!visited.contains(param) && isStorable(*param, false)) {
            QEL_TRY(applyMissing(preset, *param, context, group), key);
        }
    }
    return {};
}

CAudioParam& CAudioParamRegistry::paramOfKey(const CString& key)
{
    const auto known = params_.find(key);
    if (known != params_.end()) {
        return *known->second;
    }
    CAudioParam& param = collector_->getParam(fullNameOf(key));
    if (!isNameOfSubregistry(param.getName())) {
        params_[key] = &param;
    }
    return param;
}

CError CAudioParamRegistry::loadEntry(CAudioParam& param, const CByteBuffer& block,
                                      CAudioParamContext& context, bool withPersistent, std::int32_t group)
{
    if (isOutside(param, group)) {
        return {};
    }
    CMemoryReader reader(block.bytes());
    QEL_TRY(param.load(reader, context, false, group, withPersistent), param.getName());
    return {};
}

CError CAudioParamRegistry::applyMissing(const CAudioPreset& preset, CAudioParam& param,
                                         CAudioParamContext& context, std::int32_t group)
{
    if (param.getName() == kMovedParam) {
        if (const CByteBuffer* block = preset.findEntry(kMovedParamOldKey)) {
            QEL_TRY(loadEntry(param, *block, context, false, group), param.getName());
        }
    } else if (!isOutside(param, group)) {
        param.clearToDefault(group, -1, context);
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
    const CAudioPresetBank& bank = fromROM ? romBank_ : sessionBank_;
    if (!bank.hasIndex(index)) {
        QEL_FAIL(
            getFullName(),
            "@qelstr_CAudioParamRegistry_acquirePreset_PresetIndexError Invalid preset index %1 specified.",
            index);
    }
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
    CAudioPresetBank bank = sessionBank_;
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
    forEachHostOnly([&](const CString& key, const CAudioParam& param) {
        for (std::int32_t i = 0; i < bank.getCount() && !error; ++i) {
            error = storeParam(bank.get(i), key, param, true, kAllGroups);
        }
    });
    return error;
}

void CAudioParamRegistry::forEachHostOnly(
    const std::function<void(const CString&, const CAudioParam&)>& function)
{
    const CLock lock(mapLock_);
    synchronise();
    for (const auto& [key, param] : params_) {
        if (isStorable(*param, true) && !isStorable(*param, false)) {
            function(key, *param);
        }
    }
}

CError CAudioParamRegistry::activatePreset(CInputStream& stream, bool fromHost, std::int32_t group)
{
    CAudioPreset preset;
    QEL_TRY(preset.load(stream), getFullName());
    QEL_TRY(activate(preset, fromHost, group, stepNameFor(group)), getFullName());
    return {};
}

CError CAudioParamRegistry::activateROMPreset(std::int32_t index)
{
    CAudioPreset preset;
    {
        const CLock lock(bankLock_);
        if (!romBank_.hasIndex(index)) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CAudioParamRegistry_acquirePreset_PresetIndexError Invalid preset index %1 "
                     "specified.",
                     index);
        }
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
    if (preset.getId() != id_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRegistry_activatePreset_IncompatiblePreset Incompatible preset.");
    }
    collector_->takeChangesFromAudio(); // or a step would hold values of before
    CAudioParamUndoStep step(stepName, this);
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        context.recorder = undo_ && !fromHost ? &step : nullptr;
        if (isMaster_ && group < 0) {
            QEL_TRY(applyWithName(preset, context, fromHost), getFullName());
        } else {
            QEL_TRY(applyPreset(preset, false, context, fromHost, group), getFullName());
        }
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
    CError error;
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        error = takeSessionBank(bank, context, fromHost);
    }
    updateBridges();
    QEL_TRY(std::move(error), getFullName());
    return {};
}

} // namespace qel
