// Stores: where values are looked for, and what is refused.
#include "ApplicationDataRig.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/ResourceMap.h"

#include <fstream>
#include <list>

namespace qel {
namespace {

Bytes chunkOf(const Bytes& value, std::uint32_t id)
{
    CMemoryWriteBuffer writer;
    EXPECT_OK(writer.writeCompressedData(bufferOf(value), id));
    CByteBuffer chunk;
    writer.copyTo(chunk);
    return {chunk.bytes().begin(), chunk.bytes().end()};
}

void putFile(const fs::path& path, const Bytes& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Built-in bytes, which live as long as the process.
void putResource(const char* name, const Bytes& bytes)
{
    static std::list<Bytes> kept;
    registerResource(name, kept.emplace_back(bytes));
}

TEST_F(ApplicationData, SavedValuesComeBackInTheNextSession)
{
    EXPECT_OK(save(global_, "list", {1, 2, 3}));
    EXPECT_OK(local_.saveString("words", CString(u"caf\u00e9 \u20ac"), nullptr));
    EXPECT_EQ(load(global_, "list"), (Bytes{1, 2, 3}));

    CGlobalData nextGlobal;
    CLocalData nextLocal;
    EXPECT_EQ(load(nextGlobal, "list"), (Bytes{1, 2, 3}));
    EXPECT_EQ(nextLocal.loadString("words", "none"), CString(u"caf\u00e9 \u20ac"));
    // The two stores share a folder, but no file.
    EXPECT_EQ(load(nextLocal, "list"), Bytes{});
    EXPECT_EQ(nextGlobal.loadString("words", "none"), "none");
    EXPECT_TRUE(fs::exists(home_.storeFolder() / "AppDataGlobal_list"));
    EXPECT_EQ(filesIn(home_.storeFolder()).size(), 2u); // and no temporary file
}

TEST_F(ApplicationData, AreLookedForWithTheUserThenForAllUsersThenBuiltIn)
{
    const auto folder = [&](const char* name) { return (home_.root() / name).string(); };
    putResource("AppDataLocal_ordered", chunkOf({4}, CApplicationData::kAttrList));
    putFile(folder("common2") + "/AppDataLocal_ordered", chunkOf({3}, CApplicationData::kAttrList));
    putFile(folder("common1") + "/AppDataLocal_ordered", chunkOf({2}, CApplicationData::kAttrList));
    putFile(folder("user") + "/AppDataLocal_ordered", chunkOf({1}, CApplicationData::kAttrList));
    for (const char* place : {"user", "common1", "common2", "nowhere"}) {
        CLocalData store;
        store.setFolders(folder("user"), {folder("common1"), folder("common2")});
        const Bytes found = load(store, "ordered");
        fs::remove(folder(place) + "/AppDataLocal_ordered");
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0], std::string(place) == "user" ? 1 : place[0] == 'n' ? 4 : place[6] - '1' + 2);
        // Once known it stays, whatever happens to the file.
        EXPECT_EQ(load(store, "ordered"), found);
    }
    EXPECT_EQ(load(local_, "unheard-of"), Bytes{});
}

TEST_F(ApplicationData, NamesThatLeaveTheFolderAreRefused)
{
    putFile(home_.storeFolder().parent_path() / "AppDataLocal_x", chunkOf({1}, CApplicationData::kAttrList));
    for (const char* name :
         {"", "|x", "..", "../", "../../x", "a/../../x", "/x", "a/b", "..\\x", "c:x", "a\n"}) {
        EXPECT_EQ(load(local_, name), Bytes{}) << name;
        EXPECT_FAILS(save(local_, name, {1}), "Invalid setting name");
    }
    EXPECT_FALSE(fs::exists(home_.storeFolder()));
}

TEST_F(ApplicationData, ATargetThatCannotBeReplacedIsTold)
{
    fs::create_directories(home_.storeFolder() / "AppDataLocal_folder" / "content");
    EXPECT_FAILS(save(local_, "folder", {1}), "Unable to replace file");
    EXPECT_EQ(filesIn(home_.storeFolder()).size(), 1u);
}

} // namespace
} // namespace qel
