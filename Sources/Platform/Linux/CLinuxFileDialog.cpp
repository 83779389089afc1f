// The order of methods.
#include "CLinuxFileDialog.h"

#include <array>
#include <utility>

namespace qel::platform {

namespace {

constexpr std::array kMethods = {&startPortalDialog, &startZenity, &startKdialog};

} // namespace

bool CLinuxFileDialog::start(const FileDialogRequest& request, Handler handler)
{
    if (isOpen()) {
        return false;
    }
    request_ = request;
    handler_ = std::move(handler);
    nextMethod_ = 0;
    return true;
}

void CLinuxFileDialog::cancel()
{
    method_.reset();
    handler_ = nullptr;
}

void CLinuxFileDialog::poll()
{
    if (!isOpen()) {
        return;
    }
    FileDialogResult result;
    auto state = CFileDialogMethod::State::kUnavailable;
    if (method_) {
        state = method_->poll(result);
    }
    while (state == CFileDialogMethod::State::kUnavailable && nextMethod_ < kMethods.size()) {
        method_ = kMethods[nextMethod_++](request_);
        state = method_ ? method_->poll(result) : state;
    }
    if (state == CFileDialogMethod::State::kRunning) {
        return;
    }
    if (state == CFileDialogMethod::State::kUnavailable) {
        result.outcome = FileDialogResult::Outcome::kUnavailable;
    }
    method_.reset();
    std::exchange(handler_, nullptr)(result); // may start the next dialog, or destroy the display
}

} // namespace qel::platform
