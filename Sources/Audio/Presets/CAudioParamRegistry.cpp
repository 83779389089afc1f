// The memory of a subtree of parameters: presets, programs, A/B.
#include "CAudioParamRegistry.h"

#include "CAudioParamRegistryBatch.h"
#include "FactoryBanks.h"
#include "PresetStores.h"

#include <algorithm>

namespace qel {

void CAudioParamRegistry::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamRegistry;
    CObject::buildClassInfo(info);
    info.bind<&Self::hierarchy_>("hierarchy", "");
    info.bind<&Self::isMaster_>("is-master", false);
    info.bind<&Self::isEnumerated_>("is-enumerated", false);
    info.bind<&Self::id_>("id", "");
    info.bind<&Self::presetNaming_>("preset-naming", "");
    info.bind<&Self::presetNameParam_>("preset-name-param", "");
    info.bind<&Self::groupNamesParam_>("group-names-param", "");
    info.bind<&Self::file_>("file", "");
    info.bind<&Self::storeName_>("store-name", "");
    info.bind<&Self::collectorPath_>("param-collector", "");
    info.bind<&Self::undoPath_>("param-undo", "");
}

template <class Action>
CError CAudioParamRegistry::change(Action&& action)
{
    collector_->takeChangesFromAudio(); // or a step would hold values of before
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        const CAudioParamContext::Scope scope(context);
        const CLock lock(bankLock_);
        const auto undoLock = lockUndo();
        QEL_TRY(action(context), getFullName());
    }
    updateBridges();
    return {};
}

CAudioParamRegistry::CAudioParamRegistry() = default;

CAudioParamRegistry::~CAudioParamRegistry() = default;

CError CAudioParamRegistry::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(findObjects(), getFullName());
    if (isMaster_) {
        initBanks();
        CAudioPreset storedDefault;
        if (loadStoredDefault(id_, storedDefault)) {
            programs_.get(0) = storedDefault;
            params_.setInitialValues(std::move(storedDefault));
        }
    } else if (isEnumerated_) {
        picker_.setUp(*collector_, *this, storeName_,
                      [this](const CAudioPreset& preset, std::int32_t group) { onPicked(preset, group); });
    }
    collector_->addRegistry(*this);
    return {};
}

CError CAudioParamRegistry::findObjects()
{
    QEL_TRY(require(collector_, collectorPath_,
                    "@qelstr_CAudioParamRegistry_init_NoParamCollector No parameter collector with the name "
                    "'%1' defined."),
            getFullName());
    undo_ = dynamic_cast<CAudioParamUndo*>(findObject(undoPath_));
    nameParam_.setUp(*collector_, presetNameParam_);
    params_.setUp(*collector_, hierarchy_, isEnumerated() ? CString() : presetNameParam_);
    return {};
}

void CAudioParamRegistry::initBanks()
{
    romBank_ = loadFactoryBank(file_);
    programs_.setUp(id_, undo_);
    programs_.replaceAll(*romBank_);
}

void CAudioParamRegistry::release()
{
    picker_.release();
    if (collector_) {
        collector_->removeRegistry(*this);
    }
    releaseBridges();
    CObject::release();
}

bool CAudioParamRegistry::addParam(CAudioParam& param)
{
    return params_.offer(param);
}

// Another instance may have stored a new default meanwhile.
void CAudioParamRegistry::refreshInitialValues()
{
    CAudioPreset preset;
    if (isMaster_ && loadStoredDefault(id_, preset) && !(preset == params_.getInitialValues())) {
        params_.setInitialValues(std::move(preset));
    }
}

void CAudioParamRegistry::onParamChange(const CAudioParamNotice& notice)
{
    if (!isMaster_) {
        nameParam_.markAsUser(notice);
    } else if (nameParam_.is(*notice.param)) {
        onNameParamChange(*notice.param);
    }
}

// The name of the current program stands in the parameter, so a walk through the history, or a text field
// bound to it, renames the program.
void CAudioParamRegistry::onNameParamChange(const CAudioParam& param)
{
    {
        const CLock lock(bankLock_);
        const CString name = CAudioPreset::makeName(id_, param.getString(0, 0));
        if (!param.hasInfo() || programs_.getCurrent().getName() == name) {
            return;
        }
        programs_.getCurrent().setName(name);
    }
    updateBridges();
}

void CAudioParamRegistry::onPicked(const CAudioPreset& preset, std::int32_t group)
{
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    const CAudioParamContext::Scope scope(context);
    const CLock lock(bankLock_);
    traceError(applyWithName(preset, context, false, group));
}

// --- snapshots, and presets and banks as streams

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
    const std::int32_t first = std::max(group, 0);
    const std::int32_t last = group < 0 && !isMaster_ ? params_.countGroups() - 1 : first;
    nameParam_.show(title, first, last, context);
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
    const CAudioPresetBank& bank = fromROM ? *romBank_ : programs_.getBank();
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
        QEL_TRY(romBank_->save(stream), getFullName());
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
        QEL_TRY(checkIndex(*romBank_, index), getFullName());
        preset = romBank_->get(index);
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
    CAudioParamUndoStep step(stepName, this);
    return change([&](CAudioParamContext& context) -> CError {
        context.recorder = undo_ && !fromHost ? &step : nullptr;
        QEL_TRY(applyWithName(preset, context, fromHost, group), getFullName());
        addStep(step);
        return {};
    });
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
    return change([&](CAudioParamContext& context) { return takeSessionBank(bank, context, fromHost); });
}

// --- programs

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
    const CAudioPresetBank& bank = fromROM ? *romBank_ : isMaster_ ? programs_.getBank() : picker_.getList();
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
    return change([&](CAudioParamContext& context) -> CError {
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
        return {};
    });
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
    CAudioParamUndoStep step("Master reset", this);
    traceError(change([&](CAudioParamContext& context) -> CError {
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
        return {};
    }));
}

// --- A and B

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
    return change([&](CAudioParamContext& context) -> CError {
        CAudioPreset present;
        QEL_TRY(snapshot(present, true, false, kAllGroups), getFullName());
        if (const CAudioPreset* other = programs_.getOther()) {
            QEL_TRY(applyPreset(*other, false, context), getFullName());
        }
        programs_.swapWithOther(std::move(present));
        return {};
    });
}

bool CAudioParamRegistry::isB()
{
    const CLock lock(bankLock_);
    return programs_.isB();
}

} // namespace qel
