#include "CFile.h"

#include "FileSystem.h"
#include "TemporaryFolder.h"
#include "WholeFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace qel {

using Access = CFile::Access;

TEST(CFile, RewritesAppendsAndReadsBack)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("größe \xE2\x82\xAC.bin"); // names are UTF-8
    writeWhole(path, "a longer first content");
    writeWhole(path, std::string("one\0", 4));
    writeWhole(path, "two", Access::kAppend);
    writeWhole(folder.path("new"), "made", Access::kAppend);

    EXPECT_EQ(readWhole(path), std::string("one\0two", 7));
    EXPECT_EQ(readWhole(folder.path("new")), "made");
}

TEST(CFile, MovesAnywhereInAFileBeyondFourGigabytes)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("sparse");
    constexpr std::int64_t kFar = 5'000'000'000;
    CFile file;
    std::size_t count = 0;
    std::int64_t value = -1;
    ASSERT_EQ(file.open(path, Access::kRewrite), 0);
    ASSERT_EQ(file.setPosition(kFar), 0);
    ASSERT_EQ(file.write("xy", 2, count), 0);
    ASSERT_EQ(file.getPosition(value), 0);
    EXPECT_EQ(value, kFar + 2);
    ASSERT_EQ(file.getSize(value), 0);
    EXPECT_EQ(value, kFar + 2);
    ASSERT_EQ(file.flush(), 0);

    ASSERT_EQ(file.open(path, Access::kRead), 0); // closes the writer
    char bytes[4] = {};
    ASSERT_EQ(file.setPosition(kFar + 1), 0);
    ASSERT_EQ(file.read(bytes, sizeof(bytes), count), 0);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(bytes[0], 'y');
    ASSERT_EQ(file.read(bytes, sizeof(bytes), count), 0);
    EXPECT_EQ(count, 0u);
}

TEST(CFile, RefusesWhatIsNoRegularFileWithoutWaiting)
{
    const test::TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    writeWhole(folder.path("file"), "");

    struct Case
    {
        std::string path;
        Access access;
        int error;
    };
    const Case cases[] = {
        {folder.path("missing"), Access::kRead, ENOENT},
        {folder.path("missing/file"), Access::kRewrite, ENOENT},
        {folder.path("file/below"), Access::kRead, ENOTDIR},
        {folder.path(""), Access::kRead, EISDIR},
        {folder.path(""), Access::kAppend, EISDIR},
        {fifo, Access::kRead, EINVAL},
        {fifo, Access::kRewrite, ENXIO},
        {"/dev/zero", Access::kRead, EINVAL},
        {"/dev/null", Access::kRewrite, EINVAL},
        {folder.path("file") + std::string("\0.txt", 5), Access::kRead, EINVAL},
        {"", Access::kRead, ENOENT},
    };
    const int freeBefore = dup(0);
    ::close(freeBefore);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.path);
        CFile file;
        EXPECT_EQ(file.open(one.path, one.access), one.error);
        EXPECT_FALSE(file.isOpen());
    }
    const int freeAfter = dup(0);
    ::close(freeAfter);
    EXPECT_EQ(freeAfter, freeBefore) << "a refused file was left open";
}

TEST(CFile, ReportsTheSystemsErrorOfEachOperation)
{
    const test::TemporaryFolder folder;
    CFile file;
    std::size_t count = 99;
    std::int64_t value = 0;
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1, count), EBADF);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(file.write(&byte, 1, count), EBADF);
    EXPECT_EQ(file.getPosition(value), EBADF);
    EXPECT_EQ(file.setPosition(0), EBADF);
    EXPECT_EQ(file.getSize(value), EBADF);
    EXPECT_EQ(file.flush(), EBADF);
    EXPECT_EQ(file.close(), 0);

    ASSERT_EQ(file.open(folder.path("file"), Access::kRewrite), 0);
    EXPECT_EQ(file.read(&byte, 1, count), EBADF); // writers do not read
    EXPECT_EQ(file.setPosition(-1), EINVAL);
}

TEST(CFile, ReaderNeverSeesHalfAReplacedFile)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("preset");
    const std::string contents[2] = {std::string(70'000, 'a'), std::string(90'000, 'b')};
    writeWhole(path, contents[0]);

    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        for (int i = 1; i <= 200; ++i) {
            writeWhole(folder.path("preset.new"), contents[i % 2]);
            EXPECT_EQ(platform::renameFile(folder.path("preset.new"), path), 0);
        }
        isDone = true;
    });
    int broken = 0;
    while (!isDone) {
        const std::string seen = readWhole(path);
        broken += seen != contents[0] && seen != contents[1];
    }
    writer.join();
    EXPECT_EQ(broken, 0);
    EXPECT_FALSE(platform::fileExists(folder.path("preset.new")));
}

} // namespace qel
