// A/B, and what concerns the plug-in as a whole.
#pragma once

#include "CApplicationData.h"
#include "CAudioInterfaceClient.h"
#include "CObject.h"

namespace qel {

// Tag `ui:plugin-control`. Shows nothing itself.
//
//     interface-client   path of the client of the audio/UI interface
//     param-registry     the registry of the whole instance, a path on the audio side
//     is-b               which of the two states is heard. Set by the registry; setting it to the other value
//                        swaps, so that a button can be bound to it
//     default-preset     name of the preset that new instances start with; empty: none was chosen
//
// Events that it takes: "on-ab" swaps A and B, "on-copy" copies the present state to the other slot,
// "on-reset" returns every parameter to its initial value, "default-preset-update" reads the default preset
// anew. Raises "ab-change" when another slot is heard, and "default-preset-change".
class CPluginControl : public CObject, public CAudioInterfaceRegistryListener
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    void onRegistryState(const record::CRegistryState& state) override;

private:
    CError onAB(const CAttrMap& parameters);
    CError onCopy(const CAttrMap& parameters);
    CError onReset(const CAttrMap& parameters);
    CError onDefaultPresetUpdate(const CAttrMap& parameters);
    CError attrIsB();
    CError sendCommand(std::int32_t command);
    void onStoreChanged(CBridge* sender, std::uintptr_t userWord);

    CAudioInterfaceClient* client_ = nullptr;
    bool isBHeard_ = false;
    CApplicationDataBridge<CPluginControl> storeLink_{*this, &CPluginControl::onStoreChanged};

    // Bound attributes.
    CString clientPath_;
    CString registry_;
    bool isB_ = false;
};

} // namespace qel
