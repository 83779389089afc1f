// File dialogs by whatever the desktop has.
#pragma once

#include "CFileDialogMethod.h"
#include "CSystemFileDialog.h"

#include <cstddef>
#include <memory>

namespace qel::platform {

// Tries the methods in order, the next when one turns out not to be available.
class CLinuxFileDialog : public CSystemFileDialog
{
public:
    bool start(const FileDialogRequest& request, Handler handler) override;
    bool isOpen() const override { return handler_ != nullptr; }
    void cancel() override;

    void poll();

private:
    FileDialogRequest request_;
    Handler handler_;
    std::size_t nextMethod_ = 0;
    std::unique_ptr<CFileDialogMethod> method_;
};

} // namespace qel::platform
