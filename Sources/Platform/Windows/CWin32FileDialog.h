// The file dialogs of Windows.
#pragma once

#include "CSystemFileDialog.h"
#include "WindowsApi.h"

namespace qel::platform {

// Runs modally: the thread's messages are served by the dialog's own loop until the user is done.
class CWin32FileDialog : public CSystemFileDialog
{
public:
    bool start(const FileDialogRequest& request, Handler handler) override;
    bool isOpen() const override { return isOpen_; }
    void cancel() override {} // a modal dialog is ended by the user alone

private:
    static FileDialogResult run(const FileDialogRequest& request);
    static FileDialogResult runFile(const FileDialogRequest& request, HWND owner);
    static FileDialogResult runFolder(const FileDialogRequest& request, HWND owner);

    bool isOpen_ = false;
};

} // namespace qel::platform
