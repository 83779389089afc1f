// The library for Windows in a process that loads it and lets it go.
#include "EffectLibrary.h"

#include <gtest/gtest.h>

#include <tlhelp32.h>

namespace qel::test {
namespace {

namespace fs = std::filesystem;

int threadCount()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL isThere = Thread32First(snapshot, &entry); isThere; isThere = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    }
    CloseHandle(snapshot);
    return count;
}

struct Possessions
{
    DWORD handles = 0;
    DWORD drawing = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    DWORD windows = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    int threads = threadCount();

    Possessions() { GetProcessHandleCount(GetCurrentProcess(), &handles); }
    bool operator==(const Possessions&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Possessions& what)
{
    return out << what.handles << " handles, " << what.drawing << " GDI and " << what.windows
               << " USER objects, " << what.threads << " threads";
}

// Copies of the library, which no other test has loaded.
class Library : public testing::Test
{
protected:
    static inline const fs::path root =
        fs::temp_directory_path() / ("drumfell-" + std::to_string(GetCurrentProcessId()));

    ~Library() override
    {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    static fs::path copyTo(const fs::path& folder)
    {
        fs::create_directories(folder);
        fs::copy_file(EffectLibrary::path(), folder / "Copy.dll");
        return folder / "Copy.dll";
    }
    static void use(const fs::path& file)
    {
        EffectLibrary library(file);
        ASSERT_NE(library.handle(), nullptr) << GetLastError();
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        for (const wchar_t* name : {L"BrintalDrumfellTimer", L"BrintalDrumfellBridge"}) {
            EXPECT_TRUE(GetClassInfoExW(library.handle(), name, &description));
        }
        AEffect* effect = library.makeEffect();
        ASSERT_NE(effect, nullptr);
        effect->dispatcher(effect, vst24::kClose, 0, 0, nullptr, 0.0f);
    }
};

// A class that stays names a procedure that is gone, and the next load could not register its own.
TEST_F(Library, LeavesNothingBehindWhenItGoes)
{
    const fs::path file = copyTo(root);
    use(file);
    use(file);
    const Possessions before;
    for (int round = 0; round < 50; ++round) {
        use(file);
        ASSERT_EQ(GetModuleHandleW(L"Copy.dll"), nullptr) << round;
    }
    EXPECT_EQ(Possessions(), before);
}

TEST_F(Library, LoadsFromFoldersThatNoCodePageHas)
{
    use(copyTo(root / L"Gr\u00FC\u00DFe \u65E5\u672C\u8A9E \U0001D11E"));
}

} // namespace
} // namespace qel::test
