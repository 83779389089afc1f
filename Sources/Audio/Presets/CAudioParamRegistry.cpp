// The memory of a subtree of parameters: set-up, membership, and what it hears of parameters.
#include "CAudioParamRegistry.h"

#include "CApplication.h"
#include "Streams/CMemoryReader.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// The user's own initial state, as a preset body.
constexpr const char* kDefaultPresetKey = "default-preset";

} // namespace

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

CAudioParamRegistry::CAudioParamRegistry() = default;

CAudioParamRegistry::~CAudioParamRegistry() = default;

CError CAudioParamRegistry::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(findObjects(), getFullName());
    if (isMaster_) {
        initBanks();
        CAudioPreset storedDefault;
        if (readStoredDefault(storedDefault)) {
            programs_.get(0) = storedDefault;
            params_.setInitialValues(std::move(storedDefault));
        }
    } else if (isEnumerated_) {
        loadStoredList();
        selectorListener_.attach(collector_);
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
    params_.setUp(*collector_, hierarchy_, isEnumerated() ? CString() : presetNameParam_);
    return {};
}

void CAudioParamRegistry::initBanks()
{
    if (!file_.isEmpty()) {
        traceError(romBank_.loadFile(file_));
    }
    romBank_.setName("Factory ROM");
    programs_.setUp(id_, undo_);
    programs_.replaceAll(romBank_);
}

// What the user stored as default; false if there is nothing of use.
bool CAudioParamRegistry::readStoredDefault(CAudioPreset& outPreset) const
{
    CByteBuffer body;
    if (CApplication* application = CApplication::get()) {
        application->getLocalData().loadAppData(kDefaultPresetKey, body, CAudioPreset::kChunkId);
    }
    if (body.isEmpty()) {
        return false;
    }
    CMemoryReader reader(body.bytes());
    if (CError error = outPreset.load(reader)) {
        traceError(error);
        return false;
    }
    // Any registry's presets could be stored there.
    return outPreset.getId() == id_;
}

void CAudioParamRegistry::loadStoredList()
{
    CApplication* application = CApplication::get();
    if (!application || storeName_.isEmpty()) {
        return;
    }
    const bool isGlobal = storeName_.startsWith("/");
    CApplicationData& store = isGlobal ? application->getGlobalData() : application->getLocalData();
    CByteBuffer body;
    store.loadAppData(isGlobal ? storeName_.substring(1) : storeName_, body, CAudioPresetBank::kListChunkId);
    if (body.isEmpty()) {
        return;
    }
    CMemoryReader reader(body.bytes());
    if (CError error = storedList_.loadList(reader)) {
        traceError(error);
    }
}

void CAudioParamRegistry::release()
{
    selectorListener_.attach(nullptr);
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
    if (isMaster_ && readStoredDefault(preset) && !(preset == params_.getInitialValues())) {
        params_.setInitialValues(std::move(preset));
    }
}

void CAudioParamRegistry::onParamChange(const CAudioParamNotice& notice)
{
    if (presetNameParam_.isEmpty()) {
        return;
    }
    if (!isMaster_) {
        markAsUser(notice);
    } else if (notice.param->getName() == presetNameParam_) {
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

// Values that did not come from a preset are the user's own.
void CAudioParamRegistry::markAsUser(const CAudioParamNotice& notice)
{
    if (notice.origin == CAudioParamOrigin::kActivation || notice.param->getName() == presetNameParam_) {
        return;
    }
    static const CString kUserName = "User";
    CAudioParam& nameParam = collector_->getParam(presetNameParam_);
    CAudioParamContext context(notice.origin);
    context.recorder = notice.recorder;
    // A step writes the name even if it stands there already: the steps of one movement merge only while they
    // write the same.
    const auto mark = [&](std::int32_t group) {
        if (nameParam.hasInfo() && (notice.recorder || nameParam.getString(group, 0) != kUserName)) {
            nameParam.setString(group, 0, kUserName, context);
        }
    };
    if (!notice.change.isWhole()) {
        mark(notice.change.group);
        return;
    }
    std::int32_t groups = 0;
    {
        const CLock lock(notice.param->getLock());
        groups = notice.param->getCurrent().getGroupCount();
    }
    for (std::int32_t group = 0; group < groups; ++group) {
        mark(group);
    }
}

void CAudioParamRegistry::onSelectorChange(const CAudioParamNotice& notice)
{
    const CAudioParam& param = *notice.param;
    std::int32_t group = notice.change.group;
    CString registry;
    {
        const CLock lock(param.getLock());
        if (!param.hasInfo() || param.getInfo().isString()) {
            return;
        }
        registry = param.getInfo().paramRegistry;
        if (notice.change.isWhole() || param.getInfo().isSingleGroup) {
            group = kAllGroups;
        }
    }
    if (registry.isEmpty() || collector_->getRegistry(registry) != this) {
        return;
    }
    const double value = param.getValue(std::max(group, 0), 0);
    const double index = std::floor(value + 0.5);
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    const CAudioParamContext::Scope scope(context);
    const CLock lock(bankLock_);
    if (index >= 0.0 && index < storedList_.getCount()) {
        const CAudioPreset& preset = storedList_.get(static_cast<std::int32_t>(index));
        traceError(applyWithName(preset, context, false, group));
    }
}

} // namespace qel
