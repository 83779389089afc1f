// The file dialogs of Windows.
#pragma once

#include "CSystemFileDialog.h"
#include "WindowsApi.h"

#include <memory>

namespace qel::platform {

// Runs modally: the thread's messages, those of the host among them, are served by the dialog's own loop
// until the user is done. By one of them the host may close the editor, or put an end to the effect.
class CWin32FileDialog : public CSystemFileDialog
{
public:
    ~CWin32FileDialog() override { cancel(); }

    bool start(const FileDialogRequest& request, Handler handler) override;
    bool isOpen() const override { return run_ != nullptr; }
    void cancel() override;

private:
    // One dialog, for as long as it is on the stack.
    struct Run
    {
        HWND owner = nullptr;
        bool isCancelled = false;
    };

    static FileDialogResult show(const FileDialogRequest& request, Run& run);
    static FileDialogResult showFile(const FileDialogRequest& request, HWND owner);
    static FileDialogResult showFolder(const FileDialogRequest& request, HWND owner);

    std::shared_ptr<Run> run_;
};

} // namespace qel::platform
