// Files with the names, the places and the refusals that Windows has.
#include "CApplicationData.h"
#include "CFile.h"
#include "FileSystem.h"
#include "TemporaryHome.h"
#include "WholeFile.h"

namespace qel {
namespace {

using Access = CFile::Access;
using namespace platform;
using Folder = test::TemporaryFolder;
using test::TemporaryHome;

std::string deepFolder(const Folder& folder)
{
    std::string deep = folder.path("größe \xE2\x82\xAC \xF0\x9D\x84\x9E");
    while (deep.size() < 400) {
        deep += "/a folder with a longer name";
    }
    return deep;
}

TEST(WindowsFiles, HaveNamesOfAnyScriptAndAnyLength)
{
    const Folder folder;
    const std::string deep = deepFolder(folder);
    ASSERT_EQ(createFolders(deep), 0);
    EXPECT_TRUE(folderExists(deep));
    writeWhole(deep + "/one", "first");
    writeWhole(deep + "/two", "second");
    EXPECT_EQ(renameFile(deep + "/two", deep + "/one"), 0);
    EXPECT_EQ(readWhole(deep + "/one"), "second");
    EXPECT_FALSE(fileExists(deep + "/two"));
    EXPECT_EQ(removeFile(deep + "/one"), 0);
    EXPECT_FALSE(fileExists(deep + "/one"));
    EXPECT_TRUE(fileExists(modulePath()));
}

TEST(WindowsFiles, KeepWhatTheyHoldWhileOthersHoldThem)
{
    const Folder folder;
    const std::string path = folder.path("kept");
    writeWhole(path, "old");
    writeWhole(folder.path("new"), "new");
    CFile file;
    CFile other;
    ASSERT_EQ(file.open(path, Access::kRead, CFile::kDenyWrite), 0);
    EXPECT_EQ(other.open(path, Access::kRewrite), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(other.open(path, Access::kRead), 0);
    static_cast<void>(other.close());
    EXPECT_NE(renameFile(folder.path("new"), path), 0);
    EXPECT_EQ(readWhole(folder.path("new")), "new");
    ASSERT_EQ(file.open(path, Access::kRead, CFile::kDenyRead), 0);
    EXPECT_EQ(other.open(path, Access::kRead), ERROR_SHARING_VIOLATION);
    static_cast<void>(file.close());
    EXPECT_EQ(readWhole(path), "old");
}

TEST(WindowsFiles, TellWhyTheyDoNotOpen)
{
    const Folder folder;
    writeWhole(folder.path("file"), "");
    CFile file;
    EXPECT_EQ(file.open(folder.path("missing/file"), Access::kRewrite), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(file.open(folder.path("missing"), Access::kRead), ERROR_FILE_NOT_FOUND);
    EXPECT_NE(file.open(folder.path(), Access::kRead), 0);
    EXPECT_EQ(file.open("NUL", Access::kRewrite), ERROR_BAD_FILE_TYPE);
    EXPECT_EQ(file.open(folder.path("file") + std::string("\0.txt", 5), Access::kRead), ERROR_INVALID_NAME);
    EXPECT_EQ(file.open("\xC3(", Access::kRead), ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_FALSE(file.isOpen());
}

TEST(WindowsSettings, FollowTheProfileToAnyPlace)
{
    TemporaryHome home;
    const std::string profile = home.root().generic_string() + "/Pröfil \xE6\x97\xA5";
    ASSERT_EQ(createFolder(profile), 0);
    home.use(profile);
    CLocalData store;
    const CError error = store.saveString("words", "some", nullptr);
    EXPECT_FALSE(error) << error.text();
    CLocalData next;
    EXPECT_EQ(next.loadString("words", "none"), "some");
}

TEST(WindowsSettings, GoOnWithoutAProfileAndSaySo)
{
    TemporaryHome home;
    const std::string root = home.root().generic_string();
    writeWhole(root + "/file", "no folder");
    // The last is one that nobody may write to under wine, and elsewhere a drive that is missing.
    for (const std::string& place : {root + "/missing", root + "/file", std::string("Z:/proc")}) {
        home.use(place);
        CLocalData store;
        EXPECT_EQ(store.loadString("words", "none"), "none");
        EXPECT_TRUE(store.saveString("words", "some", nullptr)) << place;
    }
    EXPECT_EQ(readWhole(root + "/file"), "no folder");
}

TEST(WindowsSettings, KeepTheOldValueWhenTheNewOneCannotBeWritten)
{
    const TemporaryHome home;
    CLocalData store;
    EXPECT_FALSE(store.saveString("words", "old", nullptr));
    const std::filesystem::path file = home.storeFolder() / "AppDataLocal_words";
    CFile held;
    ASSERT_EQ(held.open(file.string(), Access::kRead), 0);
    EXPECT_TRUE(store.saveString("words", "new", nullptr));
    static_cast<void>(held.close());
    CLocalData next;
    EXPECT_EQ(next.loadString("words", "none"), "old");
    using Listing = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Listing(file.parent_path()), Listing()), 1) << "no temporary file stays";
}

} // namespace
} // namespace qel
