// A/B, and what concerns the plug-in as a whole.
#include "CPluginControl.h"

#include "CApplication.h"
#include "CAudioPreset.h"
#include "LiteralText.h"
#include "PresetStores.h"
#include "Streams/CMemoryReader.h"

namespace qel {

namespace {

constexpr const char* kIsB = "is-b";
constexpr const char* kDefaultPreset = "default-preset";
constexpr const char* kDefaultPresetUpdate = "default-preset-update";

CString defaultPresetName()
{
    CByteBuffer body;
    if (CApplication* application = CApplication::get()) {
        application->getLocalData().loadAppData(kDefaultPresetSetting, body, CAudioPreset::kChunkId);
    }
    CMemoryReader reader(body.bytes());
    CAudioPreset preset;
    const CError error = body.isEmpty() ? CError() : preset.load(reader);
    traceError(error);
    return literalText(preset.getTitle());
}

} // namespace

void CPluginControl::buildClassInfo(CClassInfo& info)
{
    using Self = CPluginControl;
    CObject::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::registry_>("param-registry", "");
    info.bind<&Self::isB_, &Self::attrIsB>(kIsB, false);
    info.handleEvent<&Self::onAB>("on-ab");
    info.handleEvent<&Self::onCopy>("on-copy");
    info.handleEvent<&Self::onReset>("on-reset");
    info.handleEvent<&Self::onDefaultPresetUpdate>(kDefaultPresetUpdate);
}

CError CPluginControl::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(require(client_, clientPath_,
                    "@qelstr_CPluginControl_init_NoInterfaceClient No interfacing object '%1' found."),
            getFullName());
    client_->addRegistryListener(*this);
    QEL_TRY(client_->send(record::CGetRegistry{registry_}), getFullName());
    client_->takeWaiting();
    QEL_TRY(setAttribute(kIsB, CAttrValue(isBHeard_), true), getFullName());
    if (CApplication* application = CApplication::get()) {
        storeLink_.attachSetting(application->getLocalData(), kDefaultPresetSetting);
    }
    return onDefaultPresetUpdate({});
}

void CPluginControl::release()
{
    storeLink_.detach();
    if (client_) {
        client_->removeRegistryListener(*this);
    }
    CObject::release();
}

// --- A and B

void CPluginControl::onRegistryState(const record::CRegistryState& state)
{
    if (!(state.registry == registry_) || (state.isB == isBHeard_ && state.isB == isB_)) {
        return;
    }
    isBHeard_ = state.isB;
    traceError(setAttribute(kIsB, CAttrValue(state.isB), true));
    traceError(notify("ab-change", {{kIsB, CAttrValue(state.isB)}}, false));
}

CError CPluginControl::attrIsB()
{
    return isB_ == isBHeard_ ? CError() : sendCommand(record::CRegistryCommand::kABSwap);
}

CError CPluginControl::sendCommand(std::int32_t command)
{
    return client_->send(record::CRegistryCommand{registry_, command, 0});
}

CError CPluginControl::onAB(const CAttrMap&)
{
    return sendCommand(record::CRegistryCommand::kABSwap);
}

CError CPluginControl::onCopy(const CAttrMap&)
{
    return sendCommand(record::CRegistryCommand::kABStore);
}

CError CPluginControl::onReset(const CAttrMap&)
{
    return sendCommand(record::CRegistryCommand::kMasterReset);
}

// --- default preset

// In the thread that has saved.
void CPluginControl::onStoreChanged(CBridge*, std::uintptr_t)
{
    traceError(notifyTo(".", kDefaultPresetUpdate, {}, false));
}

CError CPluginControl::onDefaultPresetUpdate(const CAttrMap&)
{
    const CString name = defaultPresetName();
    if (name == getAttrString(kDefaultPreset)) {
        return {};
    }
    QEL_TRY(setAttribute(kDefaultPreset, name, true), getFullName());
    return notify("default-preset-change", {{"text", CAttrValue(name)}}, false);
}

} // namespace qel
