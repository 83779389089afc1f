// The windows that the preset manager opens.
#pragma once

#include "CPresetPlace.h"
#include "CView.h"

#include <array>
#include <optional>

namespace qel {

// Part of the window of presets, and of its thread: the dialogs for files, and windows with a message or a
// question. None of them waits for the user: a dialog's result and a confirmation come to the owner as
// events.
class CPresetDialogs
{
public:
    enum FileAction : std::size_t
    {
        kBankLoad,
        kBankSave,
        kPresetLoad,
        kPresetSave,
        kFileActions
    };
    // What a dialog is opened for.
    struct Target
    {
        CPresetPlace place;
        bool isInsert; // behind the place, rather than at the end
    };

    explicit CPresetDialogs(CView& owner) : owner_(owner) {}

    // --- files

    // The owner gets "perform-bank-load", "perform-bank-save" and so on. `name` is proposed, without its
    // extension; empty: none.
    CError openFile(FileAction action, const CString& name, const Target& target);
    // What the dialog was opened for, once.
    std::optional<Target> takeTarget(FileAction action);

    // --- texts; each is the attribute "text" of the owner's child of that name

    CError showMessage(const char* child);
    // The owner gets the event when the user agrees, or at once if it has no text for the question. %1 is
    // the name.
    CError ask(const char* child, const CString& name, const char* event);
    CError askText(const CString& title, const CString& question, const char* event);

private:
    CError openWindow(const char* tag, const CString& title, const CString& text, const char* confirmEvent);
    CString textOfChild(const char* name) const;

    CView& owner_;
    std::array<std::optional<Target>, kFileActions> targets_;
};

} // namespace qel
