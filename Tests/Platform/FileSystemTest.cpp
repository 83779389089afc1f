#include "FileSystem.h"

#include "TemporaryFolder.h"
#include "WholeFile.h"

#include <cerrno>
#include <cstdlib>
#include <optional>

namespace qel::platform {

namespace {

// Sets, or with null unsets, a variable of the environment, and puts the old value back in the end.
class ChangedVariable
{
public:
    ChangedVariable(const char* name, const char* value) : name_(name)
    {
        if (const char* old = std::getenv(name)) {
            old_ = old;
        }
        set(value);
    }
    ChangedVariable(const ChangedVariable&) = delete;
    ChangedVariable& operator=(const ChangedVariable&) = delete;
    ~ChangedVariable() { set(old_ ? old_->c_str() : nullptr); }

private:
    void set(const char* value) { value ? setenv(name_, value, 1) : unsetenv(name_); }

    const char* name_;
    std::optional<std::string> old_;
};

} // namespace

TEST(FileSystem, CreatesAllMissingFolders)
{
    const test::TemporaryFolder folder;
    const std::string deep = folder.path("maker/Audio Plug-Ins/deep");
    EXPECT_EQ(createFolders(deep + "//"), 0);
    EXPECT_TRUE(folderExists(deep));
    EXPECT_EQ(createFolders(deep), 0);
    EXPECT_EQ(createFolders("/"), 0);
    EXPECT_EQ(createFolder(folder.path("no/parent")), ENOENT);
    EXPECT_EQ(createFolders(""), ENOENT);

    writeWhole(folder.path("file"), "");
    EXPECT_EQ(createFolders(folder.path("file")), EEXIST);
    EXPECT_EQ(createFolders(folder.path("file/below/it")), EEXIST);
    EXPECT_EQ(createFolders(folder.path(std::string("cut\0short", 9))), EINVAL);
    EXPECT_FALSE(folderExists(folder.path("cut")));
}

TEST(FileSystem, RenamesOverAndRemovesFilesOnly)
{
    const test::TemporaryFolder folder;
    writeWhole(folder.path("from"), "new");
    writeWhole(folder.path("to"), "old");
    ASSERT_EQ(renameFile(folder.path("from"), folder.path("to")), 0);
    EXPECT_EQ(readWhole(folder.path("to")), "new");
    EXPECT_FALSE(fileExists(folder.path("from")));
    EXPECT_EQ(renameFile(folder.path("from"), folder.path("to")), ENOENT);
    EXPECT_EQ(readWhole(folder.path("to")), "new");

    ASSERT_EQ(createFolder(folder.path("sub")), 0);
    EXPECT_EQ(renameFile(folder.path("to"), folder.path("sub")), EISDIR);
    EXPECT_EQ(removeFile(folder.path("sub")), EISDIR);
    EXPECT_FALSE(fileExists(folder.path("sub")));
    EXPECT_EQ(removeFile(folder.path("to")), 0);
    EXPECT_EQ(removeFile(folder.path("to")), ENOENT);
}

TEST(FileSystem, FindsTheUserDataFolderFromTheEnvironment)
{
    struct Case
    {
        const char* dataHome;
        const char* home;
        std::string folder; // empty: the look-up fails
    };
    const Case cases[] = {
        {"/data/of/mine", "/home/me", "/data/of/mine"},
        {"/data/of/mine//", nullptr, "/data/of/mine"},
        {nullptr, "/home/me/", "/home/me/.local/share"},
        {"", "/home/me", "/home/me/.local/share"},
        {"relative/data", "/home/me", "/home/me/.local/share"},
        {nullptr, "/", "/.local/share"},
        {nullptr, nullptr, ""},
        {"", "", ""},
        {"relative", "also/relative", ""},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.folder);
        const ChangedVariable dataHome("XDG_DATA_HOME", one.dataHome);
        const ChangedVariable home("HOME", one.home);
        std::string found = "stale";
        EXPECT_EQ(userDataFolder(found), one.folder.empty() ? ENOENT : 0);
        EXPECT_EQ(found, one.folder);
    }
}

} // namespace qel::platform
