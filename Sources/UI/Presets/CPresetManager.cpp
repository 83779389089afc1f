// The window in which the user arranges banks and presets.
#include "CPresetManager.h"

#include "CFileDialog.h"
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

struct FileActionText
{
    const char* object;
    const char* mode;
    const char* filter;
    const char* extension;
    const char* result;
};

constexpr FileActionText kFileActionTexts[] = {
    {"bank-load-dialog", "open", "Compressed bank files", "cbf", "perform-bank-load"},
    {"bank-save-dialog", "save", "Compressed bank files", "cbf", "perform-bank-save"},
    {"preset-load-dialog", "open", "Compressed preset files", "cpf", "perform-preset-load"},
    {"preset-save-dialog", "save", "Compressed preset files", "cpf", "perform-preset-save"},
};

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

// The name, or the name and the first number that makes it one of its own.
CString uniqueName(const CString& name, const std::vector<CString>& taken)
{
    const auto isTaken = [&](const CString& one) {
        return std::find(taken.begin(), taken.end(), one) != taken.end();
    };
    CString unique = name;
    for (int number = 2; isTaken(unique); ++number) {
        unique = name + CString(" ") + CString::number(number);
    }
    return unique;
}

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

CError CPresetManager::showLists()
{
    if (!presetList_) {
        return {};
    }
    if (added_ && library_.hasPreset(bank_, *added_)) {
        preset_ = *std::exchange(added_, std::nullopt);
    }
    return select(bank_, preset_);
}

CError CPresetManager::select(std::int32_t bank, std::int32_t preset)
{
    const auto bankCount = static_cast<std::int32_t>(library_.getBanks().size());
    bank_ = std::clamp(bank, 0, bankCount - 1);
    const CPresetLibrary::Bank& shown = *library_.findBank(bank_);
    preset_ = std::clamp(preset, -1, static_cast<std::int32_t>(shown.presets.size()) - 1);
    const CHold hold(*this);
    const bool wasSelecting = std::exchange(isSelecting_, true);
    CFirstError first;
    if (bankItems_) {
        std::vector<CString> names;
        for (const CPresetLibrary::Bank& one : library_.getBanks()) {
            names.push_back(one.name);
        }
        first.add(bankItems_->setValues(std::move(names)));
        first.add(bankList_->selectParagraph(bank_));
        first.add(bankList_->setAttribute("is-read-only", CAttrValue(!library_.canChangeBank(bank_)), true));
    }
    first.add(presetItems_->setValues(shown.presets));
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

CString CPresetManager::selectedName(bool isBank) const
{
    const CPresetLibrary::Bank& bank = *library_.findBank(bank_);
    if (isBank) {
        return bank.name;
    }
    return preset_ >= 0 ? bank.presets[static_cast<std::size_t>(preset_)] : CString();
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
    return isKept ? CError() : library_.renameBank(eventIndex(parameters, bank_), text);
}

CError CPresetManager::onPresetRename(const CAttrMap& parameters)
{
    const CString text = eventText(parameters, "text");
    const bool isKept = eventFlag(parameters, "is-cancelled") || text.isEmpty();
    return isKept ? CError() : library_.renamePreset(bank_, eventIndex(parameters, preset_), text);
}

// --- banks

CError CPresetManager::onBankAdd(const CAttrMap& parameters)
{
    std::vector<CString> taken;
    for (const CPresetLibrary::Bank& bank : library_.getBanks()) {
        taken.push_back(bank.name);
    }
    CAudioPresetBank bank;
    bank.setName(uniqueName(newBankName_, taken));
    const std::int32_t behind = eventFlag(parameters, "is-insert") ? bank_ : -1;
    QEL_TRY(library_.addBank(behind, bank), getFullName());
    const auto last = static_cast<std::int32_t>(library_.getBanks().size()) - 1;
    return select(library_.canChangeBank(behind) ? behind + 1 : last, -1);
}

CError CPresetManager::onBankDelete(const CAttrMap&)
{
    return library_.canChangeBank(bank_)
               ? confirm("confirm-bank-delete", selectedName(true), "perform-bank-delete")
               : CError();
}

CError CPresetManager::onPerformBankDelete(const CAttrMap&)
{
    return library_.removeBank(bank_);
}

// --- presets

CError CPresetManager::addPreset(const FileTarget& target, const CAudioPreset& preset)
{
    const CPresetLibrary::Bank* const bank = library_.findBank(target.bank);
    if (!bank) {
        return {};
    }
    const auto count = static_cast<std::int32_t>(bank->presets.size());
    const bool isInside = target.isInsert && library_.hasPreset(target.bank, target.preset + 1);
    CAudioPreset named = preset;
    named.setName(CAudioPreset::makeName(preset.getId(), uniqueName(preset.getTitle(), bank->presets)));
    QEL_TRY(library_.addPreset(target.bank, isInside ? target.preset + 1 : -1, named), getFullName());
    bank_ = target.bank;
    added_ = isInside ? target.preset + 1 : count;
    return showLists();
}

CError CPresetManager::onPresetAdd(const CAttrMap& parameters)
{
    if (!library_.canChange(bank_)) {
        return {};
    }
    const FileTarget target{bank_, preset_, eventFlag(parameters, "is-insert")};
    return library_.takePresent(group(), [this, target](const CAudioPreset& present) {
        CAudioPreset named = present;
        named.setName(CAudioPreset::makeName(present.getId(), newPresetName_));
        return addPreset(target, named);
    });
}

CError CPresetManager::onPresetDelete(const CAttrMap&)
{
    return library_.canChange(bank_) && preset_ >= 0
               ? confirm("confirm-preset-delete", selectedName(false), "perform-preset-delete")
               : CError();
}

CError CPresetManager::onPerformPresetDelete(const CAttrMap&)
{
    return library_.removePreset(bank_, preset_);
}

CError CPresetManager::onPresetReplace(const CAttrMap&)
{
    if (!library_.canChange(bank_) || preset_ < 0) {
        return {};
    }
    return library_.takePresent(group(), [this, bank = bank_, preset = preset_](const CAudioPreset& present) {
        return library_.replacePreset(bank, preset, present);
    });
}

CError CPresetManager::onPresetActivate(const CAttrMap& parameters)
{
    return library_.activate(bank_, eventIndex(parameters, preset_), group());
}

CError CPresetManager::onPresetSetDefault(const CAttrMap&)
{
    return library_.hasPreset(bank_, preset_)
               ? openWindow("ui:win-confirmation", "Set as Default", "Use this preset as default preset?",
                            "perform-set-default")
               : CError();
}

CError CPresetManager::onPerformSetDefault(const CAttrMap&)
{
    return library_.takePreset(bank_, preset_,
                               [](const CAudioPreset& preset) { return saveStoredDefault(preset); });
}

// --- files

CError CPresetManager::openFileDialog(FileAction action, const CString& fileName, const CAttrMap& parameters)
{
    const FileActionText& text = kFileActionTexts[action];
    fileTargets_[action] = FileTarget{bank_, preset_, eventFlag(parameters, "is-insert")};
    auto* dialog = dynamic_cast<CFileDialog*>(findChild(text.object));
    if (!dialog) {
        const CAttrMap attributes{{"mode", CAttrValue(text.mode)},
                                  {"filter-name", CAttrValue(text.filter)},
                                  {"extension", CAttrValue(text.extension)},
                                  {"result-event", CAttrValue(text.result)},
                                  {"result-target", CAttrValue(getFullName())},
                                  {"title", CAttrValue(getAttrString("title"))}};
        QEL_TRY(createChild(dialog, "ui:file-dialog", text.object, false, nullptr, &attributes),
                getFullName());
    }
    const CString proposed = fileName.isEmpty() ? CString() : fileName + "." + text.extension;
    QEL_TRY(dialog->setAttribute("filename", titleOfName(proposed), true), getFullName());
    return dialog->open();
}

CPresetManager::FileTarget CPresetManager::takeFileTarget(FileAction action, const CAttrMap& parameters)
{
    const FileTarget now{bank_, preset_, eventFlag(parameters, "is-insert")};
    return std::exchange(fileTargets_[action], std::nullopt).value_or(now);
}

CError CPresetManager::onBankLoad(const CAttrMap& parameters)
{
    return openFileDialog(kBankLoad, {}, parameters);
}

CError CPresetManager::onBankSave(const CAttrMap& parameters)
{
    return openFileDialog(kBankSave, fileNameOf(fileNamePrefix_ + " " + selectedName(true)), parameters);
}

CError CPresetManager::onPresetLoad(const CAttrMap& parameters)
{
    return library_.canChange(bank_) ? openFileDialog(kPresetLoad, {}, parameters) : CError();
}

CError CPresetManager::onPresetSave(const CAttrMap& parameters)
{
    return preset_ >= 0 ? openFileDialog(kPresetSave, fileNameOf(fileNamePrefix_ + " " + selectedName(false)),
                                         parameters)
                        : CError();
}

CError CPresetManager::checkType(const CString& id, std::function<CError()> goOn)
{
    return library_.takePresent(-1, [this, id, goOn = std::move(goOn)](const CAudioPreset& present) {
        return id == present.getId() ? goOn() : showError("error-preset-type", {});
    });
}

CError CPresetManager::onPerformBankLoad(const CAttrMap& parameters)
{
    const FileTarget target = takeFileTarget(kBankLoad, parameters);
    CAudioPresetBank bank;
    if (CError error = bank.loadFile(eventText(parameters, "filename"))) {
        return showError("error-bank-load", error);
    }
    std::vector<CString> taken;
    for (const CPresetLibrary::Bank& one : library_.getBanks()) {
        taken.push_back(one.name);
    }
    bank.setName(uniqueName(bank.getName().isEmpty() ? newBankName_ : bank.getName(), taken));
    const auto add = [this, target, bank] {
        const std::int32_t behind = target.isInsert ? target.bank : -1;
        QEL_TRY(library_.addBank(behind, bank), getFullName());
        const auto last = static_cast<std::int32_t>(library_.getBanks().size()) - 1;
        return select(library_.canChangeBank(behind) ? behind + 1 : last, -1);
    };
    return bank.isEmpty() ? add() : checkType(bank.get(0).getId(), add);
}

CError CPresetManager::onPerformBankSave(const CAttrMap& parameters)
{
    const FileTarget target = takeFileTarget(kBankSave, parameters);
    const CString file = eventText(parameters, "filename");
    CError error = library_.takeBank(target.bank, [this, file](const CAudioPresetBank& bank) {
        const CError failed = bank.saveFile(file);
        return failed ? showError("error-bank-save", failed) : CError();
    });
    return error ? showError("error-bank-save", error) : CError();
}

CError CPresetManager::onPerformPresetLoad(const CAttrMap& parameters)
{
    const FileTarget target = takeFileTarget(kPresetLoad, parameters);
    CAudioPreset preset;
    if (CError error = preset.loadFile(eventText(parameters, "filename"))) {
        return showError("error-preset-load", error);
    }
    return checkType(preset.getId(), [this, target, preset] { return addPreset(target, preset); });
}

CError CPresetManager::onPerformPresetSave(const CAttrMap& parameters)
{
    const FileTarget target = takeFileTarget(kPresetSave, parameters);
    const CString file = eventText(parameters, "filename");
    CError error = library_.takePreset(target.bank, target.preset, [this, file](const CAudioPreset& preset) {
        const CError failed = preset.saveFile(file);
        return failed ? showError("error-preset-save", failed) : CError();
    });
    return error ? showError("error-preset-save", error) : CError();
}

// --- windows with a text

CString CPresetManager::textOfChild(const char* name) const
{
    const CObject* const child = findChild(name);
    return child ? child->getAttrString("text") : CString();
}

CError CPresetManager::openWindow(const char* tag, const CString& title, const CString& text,
                                  const char* confirmEvent)
{
    const CAttrMap parameters{{"tag", CAttrValue(tag)},
                              {"window-alignment", CAttrValue("center")},
                              {"is-popup-toggle-always-create", CAttrValue(true)},
                              {"popup-title", CAttrValue(titleOfName(title))},
                              {"popup-title-message", CAttrValue(titleOfName(text))},
                              {"popup-confirm-event", CAttrValue(confirmEvent)},
                              {"popup-owner-window", CAttrValue(getFullName())}};
    return receiveEvent("popup-toggle", parameters);
}

CError CPresetManager::showError(const char* name, const CError& why)
{
    traceError(why);
    return openWindow("ui:win-message", getAttrString("title"), textOfChild(name), "");
}

CError CPresetManager::confirm(const char* question, const CString& name, const char* event)
{
    const CString text = textOfChild(question);
    return text.isEmpty() ? receiveEvent(event, {})
                          : openWindow("ui:win-confirmation", getAttrString("title"),
                                       formatMessage(text, {name}), event);
}

} // namespace qel
