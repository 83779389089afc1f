#include "CFile.h"

#include "FileSystem.h"
#include "TemporaryFolder.h"
#include "WholeFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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

} // namespace qel
