// A user's data folder of its own for one test.
#pragma once

#include "TemporaryFolder.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#endif

namespace qel::test {

// Stores made while it lives keep their files below it. Put an end to them before it goes.
class TemporaryHome
{
public:
    TemporaryHome() { use(root().string()); }
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome() { setPlace(before_); }

    const std::filesystem::path& root() const { return folder_.root(); }
    std::filesystem::path storeFolder() const { return root() / "Brintal" / "Audio Plug-Ins"; }

#ifdef _WIN32
    // Moves the data folder, as an administrator does.
    void use(const std::string& folder)
    {
        setPlace(std::filesystem::path(std::u8string(folder.begin(), folder.end())).make_preferred());
    }

private:
    static constexpr const wchar_t* kFolders =
        LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders)";
    static constexpr const wchar_t* kName = L"AppData";

    static std::wstring place()
    {
        wchar_t text[1024] = L"";
        DWORD size = sizeof text;
        RegGetValueW(HKEY_CURRENT_USER, kFolders, kName, RRF_RT_REG_EXPAND_SZ | RRF_RT_REG_SZ | RRF_NOEXPAND,
                     nullptr, text, &size);
        return text;
    }
    static void setPlace(const std::wstring& path)
    {
        RegSetKeyValueW(HKEY_CURRENT_USER, kFolders, kName, REG_EXPAND_SZ, path.c_str(),
                        static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
    }

    std::wstring before_ = place();
#else
    // Moves the data folder. An empty one counts as unset.
    void use(const std::string& folder)
    {
        setPlace(folder);
    }

private:
    static std::string place()
    {
        const char* value = std::getenv("XDG_DATA_HOME");
        return value ? value : "";
    }
    static void setPlace(const std::string& folder)
    {
        setenv("XDG_DATA_HOME", folder.c_str(), 1);
    }

    std::string before_ = place();
#endif
    TemporaryFolder folder_;
};

} // namespace qel::test
