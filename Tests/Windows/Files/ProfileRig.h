// A folder of its own for one test, and a profile in any place.
#pragma once

#include <filesystem>
#include <random>
#include <string>

#include <windows.h>

namespace qel::test {

// Removed with all that is in it.
class Folder
{
public:
    Folder()
    {
        std::random_device random;
        do {
            root_ = std::filesystem::temp_directory_path() / ("drumfell-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(root_));
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        // The form of a path that may be longer than others.
        std::error_code ignored;
        std::filesystem::remove_all(LR"(\\?\)" + root_.make_preferred().wstring(), ignored);
    }

    std::string path(const std::string& name = {}) const { return (root_ / name).generic_string(); }

private:
    std::filesystem::path root_;
};

// The user's application data lie elsewhere while it lives, as an administrator arranges it.
class MovedProfile
{
public:
    explicit MovedProfile(const std::string& folder)
    {
        DWORD size = sizeof before_;
        RegGetValueW(HKEY_CURRENT_USER, kFolders, kName, RRF_RT_REG_EXPAND_SZ | RRF_RT_REG_SZ | RRF_NOEXPAND,
                     nullptr, before_, &size);
        set(std::filesystem::path(std::u8string(folder.begin(), folder.end())).make_preferred().c_str());
    }
    MovedProfile(const MovedProfile&) = delete;
    MovedProfile& operator=(const MovedProfile&) = delete;
    ~MovedProfile() { set(before_); }

private:
    static constexpr const wchar_t* kFolders =
        LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders)";
    static constexpr const wchar_t* kName = L"AppData";

    static void set(const wchar_t* path)
    {
        RegSetKeyValueW(HKEY_CURRENT_USER, kFolders, kName, REG_EXPAND_SZ, path,
                        static_cast<DWORD>((wcslen(path) + 1) * sizeof(wchar_t)));
    }

    wchar_t before_[1024] = L"";
};

} // namespace qel::test
