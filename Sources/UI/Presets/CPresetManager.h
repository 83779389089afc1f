// The window in which the user arranges banks and presets.
#pragma once

#include "CPresetDialogs.h"
#include "CPresetLibrary.h"
#include "CPresetLists.h"
#include "CWinDrag.h"

#include <optional>

namespace qel {

// Tag `ui:preset-manager`.
//
//     interface-client       path of the client of the audio/UI interface
//     param-registry         path on the audio side
//     store-name             setting of application data with the user's banks
//     is-global-data         it is one of the global store
//     group-selector         presets are those of the selected group alone; without it of all
//     filename-prefix        with which the names of files begin that are proposed
//     defbankname, defpresetname
//                            names of new ones: "Bank", "Preset"; a number follows where the name is taken
//     bank-list-path, preset-list-path
//                            the lists (ui:textview): the one of the presets is required
//     bank-buttons-path, preset-buttons-path
//                            views that hold the buttons: "add", "delete", "load", "save" in both, and in the
//                            second one "replace", "activate" and "set-default"; any may be missing
//
// Texts that it shows: the attribute "text" of a child (core:object) of the name
//
//     error-bank-save, error-bank-load, error-preset-save, error-preset-load
//     error-preset-type      a file of another registry
//     confirm-bank-delete, confirm-preset-delete
//                            the question before, with %1 for the name; without the child nothing is asked
//
// The manager fills the lists by itself ("text-source"), links their events and the clicks of the buttons to
// its own events, and disables the buttons, and the editing of names, where there is nothing to act on:
// factory presets can be activated and saved and nothing else; the session bank keeps its name. The tree only
// lays them out.
//
// Events that it takes, for what is selected or has the "index":
//
//     bank-add, bank-delete, bank-load, bank-save
//     preset-add, preset-delete, preset-replace, preset-load, preset-save, preset-activate,
//     preset-set-default, preset-update (reads everything anew)
//     bank-rename, preset-rename                            "text", "is-cancelled"; an empty text is none
//     bank-can-rename, preset-can-rename                    refuse what keeps its name ("is-editbox-refused"
//                                                           of "source")
//     perform-bank-load, perform-bank-save, perform-preset-load, perform-preset-save
//                                                           "filename"
//     perform-bank-delete, perform-preset-delete, perform-set-default
//                                                           the user has confirmed
//     selected-paragraph-changed, paragraph-text-changed, paragraph-dbl-clicked
//                                                           of the list "list": "bank" or "preset"
//
// "preset-add", "bank-add" and both loads take "is-insert": behind what is selected, rather than at the end.
class CPresetManager : public CWinDrag
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;
    void release() override;

private:
    using FileAction = CPresetDialogs::FileAction;
    using Target = CPresetDialogs::Target;

    CError onBankAdd(const CAttrMap& parameters);
    CError onBankDelete(const CAttrMap& parameters);
    CError onBankRename(const CAttrMap& parameters);
    CError onBankCanRename(const CAttrMap& parameters);
    CError onBankLoad(const CAttrMap& parameters);
    CError onBankSave(const CAttrMap& parameters);
    CError onPresetAdd(const CAttrMap& parameters);
    CError onPresetDelete(const CAttrMap& parameters);
    CError onPresetRename(const CAttrMap& parameters);
    CError onPresetCanRename(const CAttrMap& parameters);
    CError onPresetReplace(const CAttrMap& parameters);
    CError onPresetLoad(const CAttrMap& parameters);
    CError onPresetSave(const CAttrMap& parameters);
    CError onPresetActivate(const CAttrMap& parameters);
    CError onPresetSetDefault(const CAttrMap& parameters);
    CError onUpdate(const CAttrMap& parameters);
    CError onPerformBankLoad(const CAttrMap& parameters);
    CError onPerformBankSave(const CAttrMap& parameters);
    CError onPerformPresetLoad(const CAttrMap& parameters);
    CError onPerformPresetSave(const CAttrMap& parameters);
    CError onPerformBankDelete(const CAttrMap& parameters);
    CError onPerformPresetDelete(const CAttrMap& parameters);
    CError onPerformSetDefault(const CAttrMap& parameters);
    CError onSelection(const CAttrMap& parameters);
    CError onTextChanged(const CAttrMap& parameters);
    CError onDoubleClick(const CAttrMap& parameters);

    CError select(std::int32_t bank, std::int32_t preset);
    // What the library has now, with the selection where it was as far as that is there.
    CError showLists();
    // False if something else is selected than what the user was asked about.
    bool isAsked() const { return asked_.hasSameNames(selected_); }

    // The list that asks whether it may open an edit box may not.
    CError refuseEdit(const CAttrMap& parameters);
    Target makeTarget(const CAttrMap& parameters) const;
    CError openFile(FileAction action, const CString& name, const CAttrMap& parameters);
    // What the dialog was opened for, where it is now.
    Target takeTarget(FileAction action, const CAttrMap& parameters);
    // Puts the presets' kind to the test, which the audio side knows, and then goes on.
    CError checkType(const CString& id, std::function<CError()> goOn);
    CError addBank(const Target& target, const CAudioPresetBank& bank);
    CError addPreset(const Target& target, const CAudioPreset& preset);
    // Tells the user, and traces why.
    CError showError(const char* name, const CError& why);
    // The same, if something has failed.
    CError tell(CError error, const char* name);
    CError confirm(const char* question, const CString& name, const char* event);

    CPresetLibrary library_;
    CPresetDialogs dialogs_{*this};
    CPresetLists lists_{*this};
    CPresetPlace selected_{.bank = 0, .preset = -1, .bankName = {}, .presetName = {}};
    CPresetPlace asked_;                // what the user is asked about
    std::optional<CPresetPlace> added_; // is selected once the audio side has it

    // Bound attributes.
    CString clientPath_;
    CString registry_;
    CString storeName_;
    bool isGlobalData_ = false;
    CString selectorPath_;
    CString fileNamePrefix_;
    CString newBankName_;
    CString newPresetName_;
};

} // namespace qel
