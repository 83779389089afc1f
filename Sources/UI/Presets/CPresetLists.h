// The lists and buttons of the window of presets.
#pragma once

#include "CPresetLibrary.h"
#include "CPresetPlace.h"
#include "CView.h"

namespace qel {

class CTextViewList;
class CValueList;

// Part of the window of presets, and of its thread: what the tree has laid out, linked to events of the
// owner. The tree says where the views are: by the owner's attributes "bank-list-path", "preset-list-path",
// "bank-buttons-path" and "preset-buttons-path"; all but the list of presets may be missing.
class CPresetLists
{
public:
    explicit CPresetLists(CObject& owner) : owner_(owner) {}

    // Gives the lists items of their own, and passes the clicks and the events of the lists on to the owner.
    CError link();
    bool isLinked() const { return presetList_ != nullptr; }
    // The views are going.
    void release();

    // Shows what the library has, with this selected, and disables what cannot be done with it.
    CError show(const CPresetLibrary& library, const CPresetPlace& selected, bool hasStore);
    // What lists tell meanwhile comes from here and not from the user.
    bool isShowing() const { return isShowing_; }

    // Whether an event has come from the list of banks, rather than from that of presets.
    static bool isOfBanks(const CAttrMap& parameters);
    // What is selected in the list that an event has come from; -1 for nothing.
    std::int32_t getSelected(const CAttrMap& parameters) const;

private:
    CError linkList(CTextViewList& list, const char* kind, CValueList*& outItems);
    CError showButtons(const CPresetLibrary& library, const CPresetPlace& selected, bool hasStore);
    CError setButton(const char* path, bool isEnabled);

    CObject& owner_;
    CTextViewList* bankList_ = nullptr;
    CTextViewList* presetList_ = nullptr;
    CValueList* bankItems_ = nullptr;
    CValueList* presetItems_ = nullptr;
    bool isShowing_ = false;
};

} // namespace qel
