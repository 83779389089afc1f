// The desktop's own chooser of files and folders.
#pragma once

#include "SystemEvents.h"

#include <functional>
#include <string>

namespace qel::platform {

enum class FileDialogMode
{
    kOpen,
    kSave, // asks before a file is overwritten
    kFolder,
};

struct FileDialogRequest
{
    FileDialogMode mode = FileDialogMode::kOpen;
    std::string title;
    std::string filterText; // what the user reads, such as "Presets (*.cbf)"
    std::string extension;  // of the files to show, without the dot; empty for all
    std::string folder;     // to start in; empty for the system's choice
    std::string fileName;   // proposed, for kSave
    NativeWindow owner = 0; // window of ours or of the host to be kept behind
};

struct FileDialogResult
{
    enum class Outcome
    {
        kAccepted,
        kCancelled,
        kUnavailable, // the system has no dialog to offer: ask for a path by other means
        kFailed,      // at `failedStep`, with the system's number in `error`
    };

    enum class Step
    {
        kNone,
        kWindowClass, // of the hidden window that owns a dialog on Windows
        kOwnerWindow,
        kDialog,
    };

    Outcome outcome = Outcome::kCancelled;
    std::string path; // UTF-8, '/' separators; set when accepted
    int error = 0;
    Step failedStep = Step::kNone;
};

// One dialog at a time for each display, on the display's thread. On Linux the host is never blocked: the
// desktop's portal is asked over D-Bus, else zenity or kdialog runs as a process of its own, both watched
// from CSystemDisplay::processEvents(). On Windows the dialog is modal and start() returns when it ends.
class CSystemFileDialog
{
public:
    using Handler = std::function<void(const FileDialogResult& result)>;

    virtual ~CSystemFileDialog() = default;

    // Calls back once, on Linux never before it returned; the handler is dropped without a call when the
    // display is destroyed, which closes the dialog. False, and nothing happens, while another dialog is
    // open.
    virtual bool start(const FileDialogRequest& request, Handler handler) = 0;
    virtual bool isOpen() const = 0;
    // Closes the dialog without a call of the handler.
    virtual void cancel() = 0;
};

} // namespace qel::platform
