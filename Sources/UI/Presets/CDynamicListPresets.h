// Banks and presets as lists to choose from.
#pragma once

#include "CDynamicList.h"
#include "CObject.h"
#include "CPresetLibrary.h"

namespace qel {

// Tag `ui:dynamic-list-presets`.
//
//     interface-client   path of the client of the audio/UI interface
//     param-registry     path on the audio side
//     store-name         setting of application data with the user's banks
//     is-global-data     it is one of the global store
//     is-show-banks      the list begins with the banks, whose presets open beside them; otherwise, and for a
//                        registry without banks of its own whose store has one list, with the presets
//     group-selector     activates presets for the selected group alone; without it for all
//
// Event "activate-preset" with "list-id" and "index", as a list window gives them, activates a preset; an
// index of a bank activates nothing. Raises "values-changed", and "dynamic-list-updated" with "list-id".
class CDynamicListPresets : public CObject, public CDynamicList
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    CError getItems(const CString& listId, std::vector<CDynamicListItem>& out) override;
    CError activate(const CString& listId, std::int32_t index);

private:
    CError onStoreUpdate(const CAttrMap& parameters);
    CError onActivatePreset(const CAttrMap& parameters);
    void onLibraryChanged();
    bool startsWithBanks() const;
    // The bank whose presets a list shows, or -1 for the list of banks.
    CError findListBank(const CString& listId, std::int32_t& out) const;

    CPresetLibrary library_;

    // Bound attributes.
    CString clientPath_;
    CString registry_;
    CString storeName_;
    bool isGlobalData_ = false;
    bool isShowBanks_ = true;
    CString selectorPath_;
};

} // namespace qel
