// Stores on a full disk and under several processes at once, both made by Linux's own means: no file is ever
// seen half written.
#include "ApplicationDataRig.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <random>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qel {
namespace {

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

} // namespace
} // namespace qel
