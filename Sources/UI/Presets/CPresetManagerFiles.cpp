// What the window of presets does with files, and what it asks and tells.
#include "CFileDialog.h"
#include "CPresetManager.h"
#include "EventParameters.h"
#include "LiteralText.h"
#include "PresetTitles.h"

namespace qel {

namespace {

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

} // namespace

// --- files

CError CPresetManager::openFileDialog(FileAction action, const CString& fileName, const CAttrMap& parameters)
{
    const FileActionText& text = kFileActionTexts[action];
    fileTargets_[action] = FileTarget{getSelection(), eventFlag(parameters, "is-insert")};
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
    QEL_TRY(dialog->setAttribute("filename", literalText(proposed), true), getFullName());
    return dialog->open();
}

CPresetManager::FileTarget CPresetManager::takeFileTarget(FileAction action, const CAttrMap& parameters)
{
    const bool isInsert = eventFlag(parameters, "is-insert");
    FileTarget target =
        std::exchange(fileTargets_[action], std::nullopt).value_or(FileTarget{getSelection(), isInsert});
    // Other instances may have changed the lists while the dialog was open.
    target.item.bank = locate(library_.listNames(), target.item.bank, target.item.bankName);
    const CPresetLibrary::Bank* const bank = library_.findBank(target.item.bank);
    target.item.preset = bank ? locate(bank->presets, target.item.preset, target.item.presetName) : -1;
    return target;
}

CError CPresetManager::onBankLoad(const CAttrMap& parameters)
{
    return openFileDialog(kBankLoad, {}, parameters);
}

CError CPresetManager::onBankSave(const CAttrMap& parameters)
{
    return openFileDialog(kBankSave, fileNameOf(fileNamePrefix_ + " " + bankName_), parameters);
}

CError CPresetManager::onPresetLoad(const CAttrMap& parameters)
{
    return library_.canChange(bank_) ? openFileDialog(kPresetLoad, {}, parameters) : CError();
}

CError CPresetManager::onPresetSave(const CAttrMap& parameters)
{
    return preset_ >= 0
               ? openFileDialog(kPresetSave, fileNameOf(fileNamePrefix_ + " " + presetName_), parameters)
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
    const CString name = bank.getName().isEmpty() ? newBankName_ : bank.getName();
    bank.setName(uniqueName(name, library_.listNames()));
    const auto add = [this, target, bank] { return addBank(target, bank); };
    return bank.isEmpty() ? add() : checkType(bank.get(0).getId(), add);
}

CError CPresetManager::onPerformBankSave(const CAttrMap& parameters)
{
    const FileTarget target = takeFileTarget(kBankSave, parameters);
    const CString file = eventText(parameters, "filename");
    CError error = library_.takeBank(target.item.bank, [this, file](const CAudioPresetBank& bank) {
        return tell(bank.saveFile(file), "error-bank-save");
    });
    return tell(std::move(error), "error-bank-save");
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
    CError error =
        library_.takePreset(target.item.bank, target.item.preset, [this, file](const CAudioPreset& preset) {
            return tell(preset.saveFile(file), "error-preset-save");
        });
    return tell(std::move(error), "error-preset-save");
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
                              {"popup-title", CAttrValue(title)},
                              {"popup-title-message", CAttrValue(text)},
                              {"popup-confirm-event", CAttrValue(confirmEvent)},
                              {"popup-owner-window", CAttrValue(getFullName())}};
    return receiveEvent("popup-toggle", parameters);
}

CError CPresetManager::showError(const char* name, const CError& why)
{
    traceError(why);
    return openWindow("ui:win-message", getAttrString("title"), textOfChild(name), "");
}

CError CPresetManager::tell(CError error, const char* name)
{
    return error ? showError(name, error) : CError();
}

CError CPresetManager::confirm(const char* question, const CString& name, const char* event)
{
    asked_ = getSelection();
    const CString text = textOfChild(question);
    return text.isEmpty() ? receiveEvent(event, {})
                          : openWindow("ui:win-confirmation", getAttrString("title"),
                                       formatMessage(text, {literalText(name)}), event);
}

} // namespace qel
