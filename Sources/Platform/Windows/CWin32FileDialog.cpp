// Modal choosers of files and folders.
#include "CWin32FileDialog.h"

#include "WideText.h"

#include <commdlg.h>
#include <ole2.h>
#include <shlobj.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace qel::platform {

namespace {

constexpr const wchar_t* kOwnerClassName = L"UIFileDialogOwner";
constexpr std::size_t kMaxPath = 32768; // the longest the system knows

using Outcome = FileDialogResult::Outcome;

FileDialogResult failed(int error, FileDialogResult::Step step)
{
    FileDialogResult result;
    result.outcome = Outcome::kFailed;
    result.error = error;
    result.failedStep = step;
    return result;
}

// Owns the hidden window that a dialog belongs to, and its class.
class COwnerWindow
{
public:
    COwnerWindow() = default;
    COwnerWindow(const COwnerWindow&) = delete;
    COwnerWindow& operator=(const COwnerWindow&) = delete;
    ~COwnerWindow()
    {
        if (window_) {
            DestroyWindow(window_);
        }
        if (isRegistered_) {
            UnregisterClassW(kOwnerClassName, moduleHandle());
        }
    }

    // Fills `out` and returns false when it fails.
    bool create(HWND over, FileDialogResult& out)
    {
        WNDCLASSEXW description{};
        description.cbSize = sizeof(description);
        description.lpfnWndProc = &DefWindowProcW;
        description.hInstance = moduleHandle();
        description.lpszClassName = kOwnerClassName;
        isRegistered_ = RegisterClassExW(&description) != 0;
        if (!isRegistered_ && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
            out = failed(lastError(), FileDialogResult::Step::kWindowClass);
            return false;
        }
        RECT place{};
        GetWindowRect(over ? over : GetDesktopWindow(), &place); // the dialog opens where its owner lies
        window_ = CreateWindowExW(WS_EX_TOOLWINDOW, kOwnerClassName, L"", WS_POPUP, place.left, place.top, 0,
                                  0, over, nullptr, moduleHandle(), nullptr);
        if (!window_) {
            out = failed(lastError(), FileDialogResult::Step::kOwnerWindow);
        }
        return window_ != nullptr;
    }
    HWND handle() const { return window_; }

private:
    bool isRegistered_ = false;
    HWND window_ = nullptr;
};

// The host may give the library up while code of it waits for the user.
HMODULE keepLibrary()
{
    HMODULE library = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(moduleHandle()), &library);
    return library;
}

std::wstring nativePath(const std::string& path)
{
    std::wstring wide = wideText(path);
    std::ranges::replace(wide, L'/', L'\\');
    return wide;
}

} // namespace

bool CWin32FileDialog::start(const FileDialogRequest& request, Handler handler)
{
    if (run_) {
        return false;
    }
    const auto run = std::make_shared<Run>();
    run_ = run;
    const HMODULE library = keepLibrary();
    const FileDialogResult result = show(request, *run);
    if (run->isCancelled) { // this object may be gone, and without the library what is on the stack
        return true;
    }
    FreeLibrary(library);
    run_.reset();
    handler(result); // may destroy the display
    return true;
}

void CWin32FileDialog::cancel()
{
    if (const std::shared_ptr<Run> run = std::exchange(run_, nullptr)) {
        run->isCancelled = true;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND window, LPARAM owner) {
                if (GetWindow(window, GW_OWNER) == reinterpret_cast<HWND>(owner)) {
                    PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
                }
                return TRUE;
            },
            reinterpret_cast<LPARAM>(run->owner));
    }
}

FileDialogResult CWin32FileDialog::show(const FileDialogRequest& request, Run& run)
{
    const auto over = reinterpret_cast<HWND>(request.owner);
    FileDialogResult result;
    COwnerWindow owner;
    if (!owner.create(IsWindow(over) ? GetAncestor(over, GA_ROOT) : nullptr, result)) {
        return result;
    }
    run.owner = owner.handle();
    return request.mode == FileDialogMode::kFolder ? showFolder(request, owner.handle())
                                                   : showFile(request, owner.handle());
}

FileDialogResult CWin32FileDialog::showFile(const FileDialogRequest& request, HWND owner)
{
    std::vector<wchar_t> path(kMaxPath, L'\0');
    const std::wstring fileName = nativePath(request.fileName);
    std::copy_n(fileName.begin(), std::min(fileName.size(), path.size() - 1), path.begin());
    const std::wstring title = wideText(request.title);
    const std::wstring folder = nativePath(request.folder);
    const std::wstring extension = wideText(request.extension);
    // Pairs of a text and a pattern, each ended by NUL, and one more at the end.
    const std::wstring filter = wideText(request.filterText) + L'\0' + L"*." + extension + L'\0';

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = owner;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrTitle = title.empty() ? nullptr : title.c_str();
    dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    dialog.Flags = OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST;
    if (!extension.empty()) {
        dialog.lpstrFilter = filter.c_str();
        dialog.lpstrDefExt = extension.c_str();
    }
    const bool isSave = request.mode == FileDialogMode::kSave;
    dialog.Flags |= isSave ? OFN_OVERWRITEPROMPT : OFN_FILEMUSTEXIST;
    FileDialogResult result;
    if (isSave ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog)) {
        result.outcome = Outcome::kAccepted;
        result.path = utf8Path(path.data());
    } else if (const DWORD error = CommDlgExtendedError()) { // 0: cancelled
        result = failed(static_cast<int>(error), FileDialogResult::Step::kDialog);
    }
    return result;
}

FileDialogResult CWin32FileDialog::showFolder(const FileDialogRequest& request, HWND owner)
{
    const bool isInitialized = SUCCEEDED(OleInitialize(nullptr)); // the dialog's newer form needs it
    const std::wstring title = wideText(request.title);
    BROWSEINFOW dialog{};
    dialog.hwndOwner = owner;
    dialog.lpszTitle = title.c_str();
    dialog.ulFlags = BIF_RETURNONLYFSDIRS | (isInitialized ? BIF_NEWDIALOGSTYLE : 0u);
    FileDialogResult result;
    if (const LPITEMIDLIST item = SHBrowseForFolderW(&dialog)) {
        wchar_t path[MAX_PATH] = L"";
        if (SHGetPathFromIDListW(item, path)) {
            result.outcome = Outcome::kAccepted;
            result.path = utf8Path(path);
        }
        CoTaskMemFree(item);
    }
    if (isInitialized) {
        OleUninitialize();
    }
    return result;
}

} // namespace qel::platform
