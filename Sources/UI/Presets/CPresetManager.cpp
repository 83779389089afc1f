// The window in which the user arranges banks and presets.
#include "CPresetManager.h"

#include "EventParameters.h"
#include "PresetStores.h"
#include "PresetTitles.h"
#include "ViewEvents.h"

#include <algorithm>

namespace qel {

void CPresetManager::buildClassInfo(CClassInfo& info)
{
    using Self = CPresetManager;
    CWinDrag::buildClassInfo(info);
    info.bind<&Self::clientPath_>("interface-client", "");
    info.bind<&Self::registry_>("param-registry", "");
    info.bind<&Self::storeName_>("store-name", "");
    info.bind<&Self::isGlobalData_>("is-global-data", false);
    info.bind<&Self::selectorPath_>("group-selector", "");
    info.bind<&Self::fileNamePrefix_>("filename-prefix", "");
    info.bind<&Self::newBankName_>("defbankname", "Bank");
    info.bind<&Self::newPresetName_>("defpresetname", "Preset");
    info.handleEvent<&Self::onBankAdd>("bank-add");
    info.handleEvent<&Self::onBankDelete>("bank-delete");
    info.handleEvent<&Self::onBankRename>("bank-rename");
    info.handleEvent<&Self::onBankCanRename>("bank-can-rename");
    info.handleEvent<&Self::onBankLoad>("bank-load");
    info.handleEvent<&Self::onBankSave>("bank-save");
    info.handleEvent<&Self::onPresetAdd>("preset-add");
    info.handleEvent<&Self::onPresetDelete>("preset-delete");
    info.handleEvent<&Self::onPresetRename>("preset-rename");
    info.handleEvent<&Self::onPresetCanRename>("preset-can-rename");
    info.handleEvent<&Self::onPresetReplace>("preset-replace");
    info.handleEvent<&Self::onPresetLoad>("preset-load");
    info.handleEvent<&Self::onPresetSave>("preset-save");
    info.handleEvent<&Self::onPresetActivate>("preset-activate");
    info.handleEvent<&Self::onPresetSetDefault>("preset-set-default");
    info.handleEvent<&Self::onUpdate>("preset-update");
    info.handleEvent<&Self::onUpdate>(CPresetLibrary::kStoreUpdate);
    info.handleEvent<&Self::onPerformBankLoad>("perform-bank-load");
    info.handleEvent<&Self::onPerformBankSave>("perform-bank-save");
    info.handleEvent<&Self::onPerformPresetLoad>("perform-preset-load");
    info.handleEvent<&Self::onPerformPresetSave>("perform-preset-save");
    info.handleEvent<&Self::onPerformBankDelete>("perform-bank-delete");
    info.handleEvent<&Self::onPerformPresetDelete>("perform-preset-delete");
    info.handleEvent<&Self::onPerformSetDefault>("perform-set-default");
    info.handleEvent<&Self::onSelection>("selected-paragraph-changed");
    info.handleEvent<&Self::onTextChanged>("paragraph-text-changed");
    info.handleEvent<&Self::onDoubleClick>("paragraph-dbl-clicked");
}

// --- life

CError CPresetManager::init()
{
    QEL_TRY(CWinDrag::init(), getFullName());
    QEL_TRY(library_.open(*this,
                          {.clientPath = clientPath_,
                           .registry = registry_,
                           .storeName = storeName_,
                           .isGlobal = isGlobalData_,
                           .selectorPath = selectorPath_,
                           .noClient = "@qelstr_CPresetManager_init_NoInterfaceClient No interfacing object "
                                       "'%1' found.",
                           .noSelector = "@qelstr_CPresetManager_init_NoGroupSelector No group selector "
                                         "object '%1' found."},
                          [this] { traceError(showLists()); }),
            getFullName());
    return {};
}

CError CPresetManager::initChilds()
{
    QEL_TRY(CWinDrag::initChilds(), getFullName());
    QEL_TRY(lists_.link(), getFullName());
    // An instance's own programs are what a user looks for first.
    const record::CRegistryState& state = library_.getState();
    return state.isMaster ? select(1, state.program) : select(0, -1);
}

void CPresetManager::release()
{
    library_.close();
    lists_.release();
    CWinDrag::release();
}

// --- what is shown

CError CPresetManager::onUpdate(const CAttrMap&)
{
    library_.onStoreChanged();
    return {};
}

CError CPresetManager::showLists()
{
    if (!lists_.isLinked()) {
        return {};
    }
    selected_.locateIn(library_);
    const std::vector<CString>& presets = library_.findBank(selected_.bank)->presets;
    if (added_ && library_.hasPreset(selected_.bank, added_->preset) &&
        presets[static_cast<std::size_t>(added_->preset)] == added_->presetName) {
        selected_.preset = std::exchange(added_, std::nullopt)->preset;
    }
    return select(selected_.bank, selected_.preset);
}

CError CPresetManager::select(std::int32_t bank, std::int32_t preset)
{
    const auto bankCount = static_cast<std::int32_t>(library_.getBanks().size());
    bank = std::clamp(bank, 0, bankCount - 1);
    const CPresetLibrary::Bank& shown = *library_.findBank(bank);
    preset = std::clamp(preset, -1, static_cast<std::int32_t>(shown.presets.size()) - 1);
    selected_ = {bank, preset, shown.name,
                 preset < 0 ? CString() : shown.presets[static_cast<std::size_t>(preset)]};
    const CHold hold(*this);
    return lists_.show(library_, selected_, !storeName_.isEmpty());
}

// --- the lists

CError CPresetManager::onSelection(const CAttrMap& parameters)
{
    if (lists_.isShowing()) {
        return {}; // from here
    }
    added_.reset();
    const std::int32_t index = lists_.getSelected(parameters);
    if (!CPresetLists::isOfBanks(parameters)) {
        return select(selected_.bank, index);
    }
    if (index == selected_.bank) {
        return {};
    }
    const CPresetLibrary::Bank* const bank = library_.findBank(index);
    return select(index,
                  bank && bank->kind == CPresetLibrary::Kind::kSession ? library_.getState().program : -1);
}

CError CPresetManager::onTextChanged(const CAttrMap& parameters)
{
    return CPresetLists::isOfBanks(parameters) ? onBankRename(parameters) : onPresetRename(parameters);
}

CError CPresetManager::onDoubleClick(const CAttrMap& parameters)
{
    return CPresetLists::isOfBanks(parameters) ? CError() : onPresetActivate(parameters);
}

// --- names

CError CPresetManager::refuseEdit(const CAttrMap& parameters)
{
    CObject* const source = findObject(eventText(parameters, "source"));
    return source ? source->setAttribute("is-editbox-refused", CAttrValue(true), true) : CError();
}

CError CPresetManager::onBankCanRename(const CAttrMap& parameters)
{
    return library_.canChangeBank(eventIndex(parameters, selected_.bank)) ? CError() : refuseEdit(parameters);
}

CError CPresetManager::onPresetCanRename(const CAttrMap& parameters)
{
    const bool isThere = library_.hasPreset(selected_.bank, eventIndex(parameters, selected_.preset));
    return isThere && library_.canChange(selected_.bank) ? CError() : refuseEdit(parameters);
}

CError CPresetManager::onBankRename(const CAttrMap& parameters)
{
    const CString text = eventText(parameters, "text");
    const bool isKept = eventFlag(parameters, "is-cancelled") || text.isEmpty();
    return isKept
               ? CError()
               : tell(library_.renameBank(eventIndex(parameters, selected_.bank), text), "error-bank-save");
}

CError CPresetManager::onPresetRename(const CAttrMap& parameters)
{
    const CString text = eventText(parameters, "text");
    const bool isKept = eventFlag(parameters, "is-cancelled") || text.isEmpty();
    return isKept
               ? CError()
               : tell(library_.renamePreset(selected_.bank, eventIndex(parameters, selected_.preset), text),
                      "error-preset-save");
}

// --- banks

CError CPresetManager::addBank(const Target& target, const CAudioPresetBank& bank)
{
    const std::int32_t behind = target.isInsert ? target.place.bank : -1;
    const bool isInside = library_.canChangeBank(behind);
    if (CError error = library_.addBank(behind, bank)) {
        return showError("error-bank-save", error);
    }
    const auto last = static_cast<std::int32_t>(library_.getBanks().size()) - 1;
    return select(isInside ? behind + 1 : last, -1);
}

CError CPresetManager::onBankAdd(const CAttrMap& parameters)
{
    CAudioPresetBank bank;
    bank.setName(uniqueName(newBankName_, library_.listNames()));
    return addBank(makeTarget(parameters), bank);
}

CError CPresetManager::onBankDelete(const CAttrMap&)
{
    return library_.canChangeBank(selected_.bank)
               ? confirm("confirm-bank-delete", selected_.bankName, "perform-bank-delete")
               : CError();
}

CError CPresetManager::onPerformBankDelete(const CAttrMap&)
{
    return isAsked() ? tell(library_.removeBank(selected_.bank), "error-bank-save") : CError();
}

// --- presets

CError CPresetManager::addPreset(const Target& target, const CAudioPreset& preset)
{
    const auto [bankIndex, selected, bankName, presetName] = target.place;
    const CPresetLibrary::Bank* const bank = library_.findBank(bankIndex);
    if (!bank) {
        return {};
    }
    const auto count = static_cast<std::int32_t>(bank->presets.size());
    const bool isInside = target.isInsert && library_.hasPreset(bankIndex, selected + 1);
    CAudioPreset named = preset;
    named.setName(CAudioPreset::makeName(preset.getId(), uniqueName(preset.getTitle(), bank->presets)));
    const std::int32_t place = isInside ? selected + 1 : count;
    if (CError error = library_.addPreset(bankIndex, isInside ? place : -1, named)) {
        return showError("error-preset-save", error);
    }
    if (!(bankIndex == selected_.bank)) {
        QEL_TRY(select(bankIndex, -1), getFullName());
    }
    added_ = CPresetPlace{bankIndex, place, {}, named.getTitle()};
    return showLists();
}

CError CPresetManager::onPresetAdd(const CAttrMap& parameters)
{
    if (!library_.canChange(selected_.bank)) {
        return {};
    }
    const Target target = makeTarget(parameters);
    return library_.takePresentOfGroup([this, target](const CAudioPreset& present) {
        CAudioPreset named = present;
        named.setName(CAudioPreset::makeName(present.getId(), newPresetName_));
        return addPreset(target, named);
    });
}

CError CPresetManager::onPresetDelete(const CAttrMap&)
{
    return library_.canChange(selected_.bank) && selected_.preset >= 0
               ? confirm("confirm-preset-delete", selected_.presetName, "perform-preset-delete")
               : CError();
}

CError CPresetManager::onPerformPresetDelete(const CAttrMap&)
{
    return isAsked() ? tell(library_.removePreset(selected_.bank, selected_.preset), "error-preset-save")
                     : CError();
}

CError CPresetManager::onPresetReplace(const CAttrMap&)
{
    if (!library_.canChange(selected_.bank) || selected_.preset < 0) {
        return {};
    }
    return library_.takePresentOfGroup(
        [this, bank = selected_.bank, preset = selected_.preset](const CAudioPreset& present) {
            return tell(library_.replacePreset(bank, preset, present), "error-preset-save");
        });
}

CError CPresetManager::onPresetActivate(const CAttrMap& parameters)
{
    return tell(library_.activate(selected_.bank, eventIndex(parameters, selected_.preset)),
                "error-preset-load");
}

CError CPresetManager::onPresetSetDefault(const CAttrMap&)
{
    asked_ = selected_;
    return library_.hasPreset(selected_.bank, selected_.preset)
               ? dialogs_.askText("Set as Default", "Use this preset as default preset?",
                                  "perform-set-default")
               : CError();
}

CError CPresetManager::onPerformSetDefault(const CAttrMap&)
{
    if (!isAsked()) {
        return {};
    }
    return library_.takePreset(selected_.bank, selected_.preset, [this](const CAudioPreset& preset) {
        return tell(saveStoredDefault(preset), "error-preset-save");
    });
}

// --- files

CPresetManager::Target CPresetManager::makeTarget(const CAttrMap& parameters) const
{
    return {selected_, eventFlag(parameters, "is-insert")};
}

CError CPresetManager::openFile(FileAction action, const CString& name, const CAttrMap& parameters)
{
    return dialogs_.openFile(action, name, makeTarget(parameters));
}

CPresetManager::Target CPresetManager::takeTarget(FileAction action, const CAttrMap& parameters)
{
    Target target = dialogs_.takeTarget(action).value_or(makeTarget(parameters));
    // Other instances may have changed the lists while the dialog was open.
    target.place.locateIn(library_);
    return target;
}

CError CPresetManager::onBankLoad(const CAttrMap& parameters)
{
    return openFile(CPresetDialogs::kBankLoad, {}, parameters);
}

CError CPresetManager::onBankSave(const CAttrMap& parameters)
{
    return openFile(CPresetDialogs::kBankSave, fileNameOf(fileNamePrefix_ + " " + selected_.bankName),
                    parameters);
}

CError CPresetManager::onPresetLoad(const CAttrMap& parameters)
{
    return library_.canChange(selected_.bank) ? openFile(CPresetDialogs::kPresetLoad, {}, parameters)
                                              : CError();
}

CError CPresetManager::onPresetSave(const CAttrMap& parameters)
{
    return selected_.preset >= 0
               ? openFile(CPresetDialogs::kPresetSave,
                          fileNameOf(fileNamePrefix_ + " " + selected_.presetName), parameters)
               : CError();
}

CError CPresetManager::checkType(const CString& id, std::function<CError()> goOn)
{
    return library_.takePresent([this, id, goOn = std::move(goOn)](const CAudioPreset& present) {
        return id == present.getId() ? goOn() : showError("error-preset-type", {});
    });
}

CError CPresetManager::onPerformBankLoad(const CAttrMap& parameters)
{
    const Target target = takeTarget(CPresetDialogs::kBankLoad, parameters);
    CAudioPresetBank bank;
    if (CError error = bank.loadFile(eventText(parameters, "filename"))) {
        return showError("error-bank-load", error);
    }
    const CString name = bank.getName().isEmpty() ? newBankName_ : bank.getName();
    bank.setName(uniqueName(name, library_.listNames()));
    const auto add = [this, target, bank] { return addBank(target, bank); };
    return bank.isEmpty() ? add() : checkType(bank.get(0).getId(), add);
}

CError CPresetManager::onPerformBankSave(const CAttrMap& parameters)
{
    const Target target = takeTarget(CPresetDialogs::kBankSave, parameters);
    const CString file = eventText(parameters, "filename");
    CError error = library_.takeBank(target.place.bank, [this, file](const CAudioPresetBank& bank) {
        return tell(bank.saveFile(file), "error-bank-save");
    });
    return tell(std::move(error), "error-bank-save");
}

CError CPresetManager::onPerformPresetLoad(const CAttrMap& parameters)
{
    const Target target = takeTarget(CPresetDialogs::kPresetLoad, parameters);
    CAudioPreset preset;
    if (CError error = preset.loadFile(eventText(parameters, "filename"))) {
        return showError("error-preset-load", error);
    }
    return checkType(preset.getId(), [this, target, preset] { return addPreset(target, preset); });
}

CError CPresetManager::onPerformPresetSave(const CAttrMap& parameters)
{
    const Target target = takeTarget(CPresetDialogs::kPresetSave, parameters);
    const CString file = eventText(parameters, "filename");
    CError error =
        library_.takePreset(target.place.bank, target.place.preset, [this, file](const CAudioPreset& preset) {
            return tell(preset.saveFile(file), "error-preset-save");
        });
    return tell(std::move(error), "error-preset-save");
}

// --- what the user is told and asked

CError CPresetManager::showError(const char* name, const CError& why)
{
    traceError(why);
    return dialogs_.showMessage(name);
}

CError CPresetManager::tell(CError error, const char* name)
{
    return error ? showError(name, error) : CError();
}

CError CPresetManager::confirm(const char* question, const CString& name, const char* event)
{
    asked_ = selected_;
    return dialogs_.ask(question, name, event);
}

} // namespace qel
