// Stores: where values are looked for, who is told, and that no file is ever seen half written.
#include "CApplicationData.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/ResourceMap.h"
#include "TemporaryHome.h"
#include "TreeFixture.h"

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstring>
#include <fstream>
#include <list>
#include <random>

namespace qel {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

CByteBuffer bufferOf(const Bytes& bytes)
{
    return CByteBuffer(std::span(bytes));
}

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

Bytes load(CApplicationData& store, const CString& name, std::uint32_t id = CApplicationData::kAttrList)
{
    CByteBuffer buffer;
    store.loadAppData(name, buffer, id);
    return {buffer.bytes().begin(), buffer.bytes().end()};
}

CError save(CApplicationData& store, const CString& name, const Bytes& value)
{
    return store.saveAppData(name, bufferOf(value), nullptr, CApplicationData::kAttrList);
}

// Built-in bytes, which live as long as the process.
void putResource(const char* name, const Bytes& bytes)
{
    static std::list<Bytes> kept;
    registerResource(name, kept.emplace_back(bytes));
}

std::vector<std::string> filesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

class ApplicationData : public ::testing::Test
{
protected:
    test::TemporaryHome home_;
    CGlobalData global_;
    CLocalData local_;
};

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

// Full disks and other processes are made by Linux's own means.
#ifndef _WIN32

TEST_F(ApplicationData, AFailedSaveLeavesTheOldValueAndNoOtherFile)
{
    EXPECT_OK(save(local_, "list", {1, 2}));
    Bytes large(200000);
    std::minstd_rand random(1);
    std::generate(large.begin(), large.end(), [&] { return static_cast<std::uint8_t>(random() >> 8); });

    // A disk that is full from 4 KiB on.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &small);
    const CError error = save(local_, "list", large);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_TRUE(error);

    EXPECT_EQ(load(local_, "list"), (Bytes{1, 2}));
    CLocalData next;
    EXPECT_EQ(load(next, "list"), (Bytes{1, 2}));
    EXPECT_EQ(filesIn(home_.storeFolder()), std::vector<std::string>{"AppDataLocal_list"});
}

// --- several writers

// A value of `size` bytes that begins with its seed and follows from it.
Bytes patternOf(std::uint32_t seed, std::size_t size)
{
    Bytes bytes(size);
    std::memcpy(bytes.data(), &seed, sizeof seed);
    std::minstd_rand random(seed + 1);
    std::generate(bytes.begin() + sizeof seed, bytes.end(),
                  [&] { return static_cast<std::uint8_t>(random() >> 8); });
    return bytes;
}

bool isWhole(const Bytes& bytes)
{
    std::uint32_t seed = 0;
    if (bytes.size() < sizeof seed) {
        return false;
    }
    std::memcpy(&seed, bytes.data(), sizeof seed);
    return bytes == patternOf(seed, bytes.size());
}

CError savePattern(CApplicationData& store, std::uint32_t seed)
{
    const std::size_t size = 1000 + 37 * (seed % 1500);
    return store.saveAppData("torn", bufferOf(patternOf(seed, size)), nullptr, CApplicationData::kString);
}

TEST_F(ApplicationData, ProcessesThatSaveTheSameSettingNeverLeaveATornFile)
{
    EXPECT_OK(savePattern(global_, 0));
    constexpr std::uint32_t kWriters = 3;
    constexpr std::uint32_t kSaves = 40;
    std::vector<pid_t> writers;
    for (std::uint32_t writer = 1; writer <= kWriters; ++writer) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            CGlobalData store;
            bool failed = false;
            for (std::uint32_t i = 0; i < kSaves; ++i) {
                failed |= static_cast<bool>(savePattern(store, writer * 1000 + i));
            }
            _exit(failed ? 1 : 0);
        }
        writers.push_back(child);
    }
    std::uint32_t reads = 0;
    for (std::size_t running = writers.size(); running > 0; ++reads) {
        CGlobalData reader; // without a cache
        ASSERT_TRUE(isWhole(load(reader, "torn", CApplicationData::kString)));
        int status = 0;
        if (waitpid(-1, &status, WNOHANG) > 0) {
            EXPECT_EQ(status, 0);
            --running;
        }
    }
    EXPECT_GT(reads, kWriters);
    EXPECT_EQ(filesIn(home_.storeFolder()).size(), 1u);
}

#endif

} // namespace
} // namespace qel
