// The window in which the user arranges banks and presets.
#include "CPresetManager.h"

#include "CFirstError.h"
#include "CParamGroupSelector.h"
#include "CTextViewList.h"
#include "CValueList.h"
#include "EventParameters.h"
#include "PresetStores.h"
#include "PresetTitles.h"
#include "ViewEvents.h"

#include <algorithm>

namespace qel {

namespace {

using Kind = CPresetLibrary::Kind;

constexpr const char* kStoreUpdate = "shared-banks-update";
constexpr const char* kBank = "bank";
constexpr const char* kPreset = "preset";

struct ButtonLink
{
    const char* path;
    const char* event;
};

constexpr ButtonLink kButtons[] = {
    {"$bank-buttons-path.add", "bank-add"},
    {"$bank-buttons-path.delete", "bank-delete"},
    {"$bank-buttons-path.load", "bank-load"},
    {"$bank-buttons-path.save", "bank-save"},
    {"$preset-buttons-path.add", "preset-add"},
    {"$preset-buttons-path.delete", "preset-delete"},
    {"$preset-buttons-path.replace", "preset-replace"},
    {"$preset-buttons-path.load", "preset-load"},
    {"$preset-buttons-path.save", "preset-save"},
    {"$preset-buttons-path.activate", "preset-activate"},
    {"$preset-buttons-path.set-default", "preset-set-default"},
};

} // namespace

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
    info.bind<&Self::bankListPath_>("bank-list-path", "");
    info.bind<&Self::presetListPath_>("preset-list-path", "");
    info.bind<&Self::bankButtonsPath_>("bank-buttons-path", "");
    info.bind<&Self::presetButtonsPath_>("preset-buttons-path", "");
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
    info.handleEvent<&Self::onUpdate>(kStoreUpdate);
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
    if (!selectorPath_.isEmpty()) {
        QEL_TRY(require(selector_, selectorPath_,
                        "@qelstr_CPresetManager_init_NoGroupSelector No group selector object '%1' found."),
                getFullName());
    }
    QEL_TRY(library_.open(*this,
                          {.clientPath = clientPath_,
                           .registry = registry_,
                           .storeName = storeName_,
                           .isGlobal = isGlobalData_,
                           .storeEvent = kStoreUpdate,
                           .noClient = "@qelstr_CPresetManager_init_NoInterfaceClient No interfacing object "
                                       "'%1' found."},
                          [this] { traceError(showLists()); }),
            getFullName());
    return {};
}

CError CPresetManager::initChilds()
{
    QEL_TRY(CWinDrag::initChilds(), getFullName());
    presetList_ = dynamic_cast<CTextViewList*>(findObject(presetListPath_));
    if (!presetList_) {
        QEL_FAIL(getFullName(), "@qelstr_CPresetManager_initChilds_NoPresetList No preset list view found.");
    }
    QEL_TRY(linkList(*presetList_, kPreset, presetItems_), getFullName());
    bankList_ = dynamic_cast<CTextViewList*>(findObject(bankListPath_));
    if (bankList_) {
        QEL_TRY(linkList(*bankList_, kBank, bankItems_), getFullName());
    }
    QEL_TRY(linkButtons(), getFullName());
    // An instance's own programs are what a user looks for first.
    const record::CRegistryState& state = library_.getState();
    return state.isMaster ? select(1, state.program) : select(0, -1);
}

CError CPresetManager::linkList(CTextViewList& list, const char* kind, CValueList*& outItems)
{
    const CString name = CString(kind) + CString("-items");
    QEL_TRY(createChild(outItems, "ui:value-list-manual", name), getFullName());
    QEL_TRY(list.setAttribute("text-source", outItems->getFullName(), true), getFullName());
    QEL_TRY(list.setAttribute("editbox-can-rename-event", CString(kind) + CString("-can-rename"), true),
            getFullName());
    QEL_TRY(list.setAttribute("editbox-can-rename-target", getFullName(), true), getFullName());
    const CAttrMap which{{"list", CAttrValue(kind)}};
    for (const char* event :
         {"selected-paragraph-changed", "paragraph-text-changed", "paragraph-dbl-clicked"}) {
        QEL_TRY(linkEvent(list, event, *this, event, which), getFullName());
    }
    return {};
}

CError CPresetManager::linkButtons()
{
    for (const ButtonLink& link : kButtons) {
        if (auto* button = dynamic_cast<CView*>(findObject(link.path))) {
            QEL_TRY(linkEvent(*button, "mouse-release", *this, link.event), getFullName());
        }
    }
    return {};
}

void CPresetManager::release()
{
    library_.close();
    presetList_ = bankList_ = nullptr;
    CWinDrag::release();
}

// --- what is shown

std::int32_t CPresetManager::group() const
{
    return selector_ ? selector_->getGroup() : -1;
}

CError CPresetManager::onUpdate(const CAttrMap&)
{
    library_.onStoreChanged();
    return {};
}

// By its name, since other instances change the same lists; at its place if it has another name now, and
// otherwise what has taken its place.
std::int32_t CPresetManager::locate(const std::vector<CString>& names, std::int32_t index,
                                    const CString& name)
{
    const auto count = static_cast<std::int32_t>(names.size());
    if (index < 0 || (index < count && names[static_cast<std::size_t>(index)] == name)) {
        return index;
    }
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? std::min(index, count - 1)
                                : static_cast<std::int32_t>(found - names.begin());
}

CError CPresetManager::showLists()
{
    if (!presetList_) {
        return {};
    }
    bank_ = locate(library_.listNames(), bank_, bankName_);
    preset_ = locate(library_.findBank(bank_)->presets, preset_, presetName_);
    const std::vector<CString>& presets = library_.findBank(bank_)->presets;
    if (added_ && library_.hasPreset(bank_, added_->preset) &&
        presets[static_cast<std::size_t>(added_->preset)] == added_->presetName) {
        preset_ = std::exchange(added_, std::nullopt)->preset;
    }
    return select(bank_, preset_);
}

CError CPresetManager::select(std::int32_t bank, std::int32_t preset)
{
    const auto bankCount = static_cast<std::int32_t>(library_.getBanks().size());
    bank_ = std::clamp(bank, 0, bankCount - 1);
    const CPresetLibrary::Bank& shown = *library_.findBank(bank_);
    preset_ = std::clamp(preset, -1, static_cast<std::int32_t>(shown.presets.size()) - 1);
    bankName_ = shown.name;
    presetName_ = preset_ < 0 ? CString() : shown.presets[static_cast<std::size_t>(preset_)];
    const CHold hold(*this);
    const bool wasSelecting = std::exchange(isSelecting_, true);
    CFirstError first;
    if (bankItems_) {
        first.add(bankItems_->setValues(library_.listNames()));
        first.add(bankList_->selectParagraph(bank_));
        first.add(bankList_->setAttribute("is-read-only", CAttrValue(!library_.canChangeBank(bank_)), true));
    }
    first.add(presetItems_->setValues(shown.presets, library_.findCurrent(bank_)));
    first.add(presetList_->selectParagraph(preset_));
    first.add(presetList_->setAttribute("is-read-only", CAttrValue(!library_.canChange(bank_)), true));
    isSelecting_ = wasSelecting;
    first.add(updateButtons());
    return first.take();
}

CError CPresetManager::setButton(const char* path, bool isEnabled)
{
    CObject* const button = findObject(path);
    return button ? setEnabled(*button, isEnabled) : CError();
}

CError CPresetManager::updateButtons()
{
    const bool hasPreset = library_.hasPreset(bank_, preset_);
    const bool canChange = library_.canChange(bank_);
    // An instance has at least one program.
    const CPresetLibrary::Bank& bank = *library_.findBank(bank_);
    const bool isLast = bank.kind == Kind::kSession && bank.presets.size() == 1;
    CFirstError first;
    first.add(setButton("$bank-buttons-path.add", !storeName_.isEmpty()));
    first.add(setButton("$bank-buttons-path.load", !storeName_.isEmpty()));
    first.add(setButton("$bank-buttons-path.delete", library_.canChangeBank(bank_)));
    first.add(setButton("$preset-buttons-path.add", canChange));
    first.add(setButton("$preset-buttons-path.load", canChange));
    first.add(setButton("$preset-buttons-path.delete", canChange && hasPreset && !isLast));
    first.add(setButton("$preset-buttons-path.replace", canChange && hasPreset));
    first.add(setButton("$preset-buttons-path.save", hasPreset));
    first.add(setButton("$preset-buttons-path.activate", hasPreset));
    first.add(setButton("$preset-buttons-path.set-default", hasPreset && library_.getState().isMaster));
    return first.take();
}

// --- the lists

CError CPresetManager::onSelection(const CAttrMap& parameters)
{
    if (isSelecting_) {
        return {}; // from here
    }
    added_.reset();
    const bool isBank = eventText(parameters, "list") == kBank;
    const CTextViewList* const list = isBank ? bankList_ : presetList_;
    const std::int32_t index = list ? list->getSelectedParagraph() : -1;
    if (!isBank) {
        return select(bank_, index);
    }
    if (index == bank_) {
        return {};
    }
    const CPresetLibrary::Bank* const bank = library_.findBank(index);
    return select(index, bank && bank->kind == Kind::kSession ? library_.getState().program : -1);
}

CError CPresetManager::onTextChanged(const CAttrMap& parameters)
{
    return eventText(parameters, "list") == kBank ? onBankRename(parameters) : onPresetRename(parameters);
}

CError CPresetManager::onDoubleClick(const CAttrMap& parameters)
{
    return eventText(parameters, "list") == kBank ? CError() : onPresetActivate(parameters);
}

// --- names

CError CPresetManager::refuseEdit(const CAttrMap& parameters)
{
    CObject* const source = findObject(eventText(parameters, "source"));
    return source ? source->setAttribute("is-editbox-refused", CAttrValue(true), true) : CError();
}

CError CPresetManager::onBankCanRename(const CAttrMap& parameters)
{
    return library_.canChangeBank(eventIndex(parameters, bank_)) ? CError() : refuseEdit(parameters);
}

CError CPresetManager::onPresetCanRename(const CAttrMap& parameters)
{
    const bool isThere = library_.hasPreset(bank_, eventIndex(parameters, preset_));
    return isThere && library_.canChange(bank_) ? CError() : refuseEdit(parameters);
}

CError CPresetManager::onBankRename(const CAttrMap& parameters)
{
    const CString text = eventText(parameters, "text");
    const bool isKept = eventFlag(parameters, "is-cancelled") || text.isEmpty();
    return isKept ? CError()
                  : tell(library_.renameBank(eventIndex(parameters, bank_), text), "error-bank-save");
}

CError CPresetManager::onPresetRename(const CAttrMap& parameters)
{
    const CString text = eventText(parameters, "text");
    const bool isKept = eventFlag(parameters, "is-cancelled") || text.isEmpty();
    return isKept ? CError()
                  : tell(library_.renamePreset(bank_, eventIndex(parameters, preset_), text),
                         "error-preset-save");
}

// --- banks

CError CPresetManager::addBank(const FileTarget& target, const CAudioPresetBank& bank)
{
    const std::int32_t behind = target.isInsert ? target.item.bank : -1;
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
    return addBank({getSelection(), eventFlag(parameters, "is-insert")}, bank);
}

CError CPresetManager::onBankDelete(const CAttrMap&)
{
    return library_.canChangeBank(bank_) ? confirm("confirm-bank-delete", bankName_, "perform-bank-delete")
                                         : CError();
}

CError CPresetManager::onPerformBankDelete(const CAttrMap&)
{
    return isAsked() ? tell(library_.removeBank(bank_), "error-bank-save") : CError();
}

// --- presets

CError CPresetManager::addPreset(const FileTarget& target, const CAudioPreset& preset)
{
    const auto [bankIndex, selected, bankName, presetName] = target.item;
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
    if (!(bankIndex == bank_)) {
        QEL_TRY(select(bankIndex, -1), getFullName());
    }
    added_ = Item{bankIndex, place, {}, named.getTitle()};
    return showLists();
}

CError CPresetManager::onPresetAdd(const CAttrMap& parameters)
{
    if (!library_.canChange(bank_)) {
        return {};
    }
    const FileTarget target{getSelection(), eventFlag(parameters, "is-insert")};
    return library_.takePresent(group(), [this, target](const CAudioPreset& present) {
        CAudioPreset named = present;
        named.setName(CAudioPreset::makeName(present.getId(), newPresetName_));
        return addPreset(target, named);
    });
}

CError CPresetManager::onPresetDelete(const CAttrMap&)
{
    return library_.canChange(bank_) && preset_ >= 0
               ? confirm("confirm-preset-delete", presetName_, "perform-preset-delete")
               : CError();
}

CError CPresetManager::onPerformPresetDelete(const CAttrMap&)
{
    return isAsked() ? tell(library_.removePreset(bank_, preset_), "error-preset-save") : CError();
}

CError CPresetManager::onPresetReplace(const CAttrMap&)
{
    if (!library_.canChange(bank_) || preset_ < 0) {
        return {};
    }
    return library_.takePresent(group(), [this, bank = bank_, preset = preset_](const CAudioPreset& present) {
        return tell(library_.replacePreset(bank, preset, present), "error-preset-save");
    });
}

CError CPresetManager::onPresetActivate(const CAttrMap& parameters)
{
    return tell(library_.activate(bank_, eventIndex(parameters, preset_), group()), "error-preset-load");
}

CError CPresetManager::onPresetSetDefault(const CAttrMap&)
{
    asked_ = getSelection();
    return library_.hasPreset(bank_, preset_)
               ? openWindow("ui:win-confirmation", "Set as Default", "Use this preset as default preset?",
                            "perform-set-default")
               : CError();
}

CError CPresetManager::onPerformSetDefault(const CAttrMap&)
{
    if (!isAsked()) {
        return {};
    }
    return library_.takePreset(bank_, preset_, [this](const CAudioPreset& preset) {
        return tell(saveStoredDefault(preset), "error-preset-save");
    });
}

} // namespace qel
