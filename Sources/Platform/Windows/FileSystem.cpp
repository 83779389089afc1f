// Files and folders by name, through the wide calls of the system.
#include "FileSystem.h"

#include "WideText.h"
#include "WindowsApi.h"

#include <shlobj.h>

namespace qel::platform {

namespace {

// A virus scanner or indexer may hold a freshly written file for a moment and so refuse to have it replaced.
constexpr int kRenameAttempts = 10;
constexpr DWORD kRenamePauseMs = 10;

DWORD attributesOf(const std::string& path)
{
    std::wstring wide;
    return widePath(path, wide) ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(wide.c_str());
}

int specialFolder(int csidl, std::string& out)
{
    wchar_t path[MAX_PATH] = L"";
    const HRESULT result = SHGetFolderPathW(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path);
    if (result != S_OK) {
        return HRESULT_FACILITY(result) == FACILITY_WIN32 ? HRESULT_CODE(result) : static_cast<int>(result);
    }
    out = utf8Path(path);
    return 0;
}

} // namespace

HINSTANCE moduleHandle()
{
    static const char anchor = 0;
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&anchor), &module);
    return module;
}

bool fileExists(const std::string& path)
{
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool folderExists(const std::string& path)
{
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

int createFolder(const std::string& path)
{
    std::wstring wide;
    if (const int error = widePath(path, wide)) {
        return error;
    }
    if (CreateDirectoryW(wide.c_str(), nullptr)) {
        return 0;
    }
    const int error = lastError();
    return error == ERROR_ALREADY_EXISTS && folderExists(path) ? 0 : error;
}

int renameFile(const std::string& from, const std::string& to)
{
    std::wstring wideFrom;
    std::wstring wideTo;
    if (const int error = widePath(from, wideFrom)) {
        return error;
    }
    if (const int error = widePath(to, wideTo)) {
        return error;
    }
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(wideFrom.c_str(), wideTo.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return 0;
        }
        const int error = lastError();
        const bool isHeld = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!isHeld || attempt == kRenameAttempts || folderExists(to)) {
            return error;
        }
        Sleep(kRenamePauseMs);
    }
}

int removeFile(const std::string& path)
{
    std::wstring wide;
    if (const int error = widePath(path, wide)) {
        return error;
    }
    return DeleteFileW(wide.c_str()) ? 0 : lastError();
}

int homeFolder(std::string& out)
{
    return specialFolder(CSIDL_PROFILE, out);
}

int userDataFolder(std::string& out)
{
    return specialFolder(CSIDL_APPDATA, out);
}

int commonDataFolders(std::vector<std::string>& out)
{
    out.assign(1, {});
    const int error = specialFolder(CSIDL_COMMON_APPDATA, out.front());
    if (error) {
        out.clear();
    }
    return error;
}

std::string modulePath()
{
    // The call cuts a path that does not fit and then returns the whole size.
    for (std::wstring path(MAX_PATH, L'\0'); path.size() < 65536; path.resize(path.size() * 2)) {
        const DWORD length = GetModuleFileNameW(moduleHandle(), path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return utf8Path(path);
        }
    }
    return {};
}

std::uint32_t processId()
{
    return GetCurrentProcessId();
}

} // namespace qel::platform
