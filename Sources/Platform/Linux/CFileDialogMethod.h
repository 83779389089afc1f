// One way to ask the user for a file.
#pragma once

#include "CSystemFileDialog.h"

#include <memory>

namespace qel::platform {

// A dialog under way in another process. Destroying it closes the dialog.
class CFileDialogMethod
{
public:
    enum class State
    {
        kRunning,
        kDone,        // the result is there
        kUnavailable, // it cannot be asked this way
    };

    virtual ~CFileDialogMethod() = default;
    // Never waits. After another answer than kRunning it is not called again.
    virtual State poll(FileDialogResult& out) = 0;
};

// Each returns null where the machine has no such thing at all.
std::unique_ptr<CFileDialogMethod> startPortalDialog(const FileDialogRequest& request);
std::unique_ptr<CFileDialogMethod> startZenity(const FileDialogRequest& request);
std::unique_ptr<CFileDialogMethod> startKdialog(const FileDialogRequest& request);

} // namespace qel::platform
