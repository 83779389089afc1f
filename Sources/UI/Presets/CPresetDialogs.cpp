// The windows that the preset manager opens.
#include "CPresetDialogs.h"

#include "CFileDialog.h"
#include "LiteralText.h"

#include <utility>

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

constexpr const char* kMessageWindow = "ui:win-message";
constexpr const char* kQuestionWindow = "ui:win-confirmation";

} // namespace

// --- files

CError CPresetDialogs::openFile(FileAction action, const CString& name, const Target& target)
{
    const FileActionText& text = kFileActionTexts[action];
    targets_[action] = target;
    auto* dialog = dynamic_cast<CFileDialog*>(owner_.findChild(text.object));
    if (!dialog) {
        const CAttrMap attributes{{"mode", CAttrValue(text.mode)},
                                  {"filter-name", CAttrValue(text.filter)},
                                  {"extension", CAttrValue(text.extension)},
                                  {"result-event", CAttrValue(text.result)},
                                  {"result-target", CAttrValue(owner_.getFullName())},
                                  {"title", CAttrValue(owner_.getAttrString("title"))}};
        QEL_TRY(owner_.createChild(dialog, "ui:file-dialog", text.object, false, nullptr, &attributes),
                owner_.getFullName());
    }
    const CString proposed = name.isEmpty() ? CString() : name + "." + text.extension;
    QEL_TRY(dialog->setAttribute("filename", literalText(proposed), true), owner_.getFullName());
    return dialog->open();
}

std::optional<CPresetDialogs::Target> CPresetDialogs::takeTarget(FileAction action)
{
    return std::exchange(targets_[action], std::nullopt);
}

// --- texts

CString CPresetDialogs::textOfChild(const char* name) const
{
    const CObject* const child = owner_.findChild(name);
    return child ? child->getAttrString("text") : CString();
}

CError CPresetDialogs::openWindow(const char* tag, const CString& title, const CString& text,
                                  const char* confirmEvent)
{
    const CAttrMap parameters{{"tag", CAttrValue(tag)},
                              {"window-alignment", CAttrValue("center")},
                              {"is-popup-toggle-always-create", CAttrValue(true)},
                              {"popup-title", CAttrValue(title)},
                              {"popup-title-message", CAttrValue(text)},
                              {"popup-confirm-event", CAttrValue(confirmEvent)},
                              {"popup-owner-window", CAttrValue(owner_.getFullName())}};
    return owner_.receiveEvent("popup-toggle", parameters);
}

CError CPresetDialogs::showMessage(const char* child)
{
    return openWindow(kMessageWindow, owner_.getAttrString("title"), textOfChild(child), "");
}

CError CPresetDialogs::ask(const char* child, const CString& name, const char* event)
{
    const CString text = textOfChild(child);
    return text.isEmpty()
               ? owner_.receiveEvent(event, {})
               : askText(owner_.getAttrString("title"), formatMessage(text, {literalText(name)}), event);
}

CError CPresetDialogs::askText(const CString& title, const CString& question, const char* event)
{
    return openWindow(kQuestionWindow, title, question, event);
}

} // namespace qel
