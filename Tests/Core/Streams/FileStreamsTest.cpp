#include "StreamTestSupport.h"
#include "TemporaryFolder.h"

#include "Streams/CFileReader.h"
#include "Streams/CFileWriter.h"
#include "Streams/CResourceReader.h"

#include <filesystem>

namespace qel {

namespace {

class FileStreams : public ::testing::Test
{
protected:
    CString path(const std::string& name) const { return CString::fromUtf8(folder_.path(name)); }
    void writeFile(const CString& name, std::string_view text, bool append = false)
    {
        CFileWriter writer;
        ASSERT_TRUE(succeeded(writer.open(name, 0, append)));
        ASSERT_TRUE(succeeded(writer.write(text.data(), text.size())));
        ASSERT_TRUE(succeeded(writer.close()));
    }

    test::TemporaryFolder folder_;
};

} // namespace

TEST_F(FileStreams, AppendAndRewriteDoWhatTheySay)
{
    const CString name = path("\xC3\xA9tude.bin");
    writeFile(name, "hello");
    writeFile(name, " world", true);
    CFileReader reader;
    std::int64_t size = 0;
    char text[5] = {};
    ASSERT_TRUE(succeeded(reader.open(name, 0)));
    ASSERT_TRUE(succeeded(reader.getSize(size)));
    EXPECT_EQ(size, 11);
    ASSERT_TRUE(succeeded(reader.consume(6)));
    ASSERT_TRUE(succeeded(reader.read(text, 5)));
    EXPECT_EQ(std::string(text, 5), "world");
    ASSERT_TRUE(succeeded(reader.setPosition(1)));
    ASSERT_TRUE(succeeded(reader.read(text, 4)));
    EXPECT_EQ(std::string(text, 4), "ello");
    std::int64_t position = 0;
    ASSERT_TRUE(succeeded(reader.getPosition(position)));
    EXPECT_EQ(position, 5);

    writeFile(name, "x");
    ASSERT_TRUE(succeeded(reader.open(name, 0)));
    ASSERT_TRUE(succeeded(reader.getSize(size)));
    EXPECT_EQ(size, 1);
}

TEST_F(FileStreams, AWriterCanGoBackAndPatch)
{
    const CString name = path("patched");
    CFileWriter writer;
    std::int64_t value = 0;
    ASSERT_TRUE(succeeded(writer.open(name, 0, false)));
    ASSERT_TRUE(succeeded(writer.write("....tail", 8)));
    ASSERT_TRUE(succeeded(writer.setPosition(0)));
    ASSERT_TRUE(succeeded(writer.write("head", 4)));
    ASSERT_TRUE(succeeded(writer.getPosition(value)));
    EXPECT_EQ(value, 4);
    ASSERT_TRUE(succeeded(writer.getSize(value)));
    EXPECT_EQ(value, 8);
    ASSERT_TRUE(succeeded(writer.close()));

    CResourceReader reader;
    ASSERT_TRUE(succeeded(reader.open(name))) << "an absolute path is a file";
    char text[8];
    ASSERT_TRUE(succeeded(reader.read(text, 8)));
    EXPECT_EQ(std::string(text, 8), "headtail");
}

// The host's working directory is nobody's: whoever can put a file there is not to change the plug-in.
TEST_F(FileStreams, ResourcesAreNotLookedForInTheWorkingDirectory)
{
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path(""));
    writeFile("Planted.xml", "planted");
    CResourceReader reader;
    const std::string failure = message(reader.open("Planted.xml"));
    std::filesystem::current_path(before);
    EXPECT_EQ(failure, "There is no built-in resource 'Planted.xml'.");
}

TEST_F(FileStreams, TheEndIsAnErrorOnlyForWhoNeedsMore)
{
    const CString name = path("short");
    writeFile(name, "abc");
    CFileReader reader;
    ASSERT_TRUE(succeeded(reader.open(name, 0)));
    char text[8];
    std::size_t count = 8;
    EXPECT_TRUE(succeeded(reader.readStreamed(text, count)));
    EXPECT_EQ(count, 3u);
    count = 8;
    EXPECT_TRUE(succeeded(reader.readStreamed(text, count)));
    EXPECT_EQ(count, 0u);
    ASSERT_TRUE(succeeded(reader.setPosition(1)));
    EXPECT_EQ(message(reader.read(text, 8)),
              "Unable to read from file '" + name.toUtf8() + "' (required 8 bytes, read 2 bytes).");
}

TEST_F(FileStreams, AChunkTravelsThroughAFile)
{
    const CString name = path("chunk");
    const Bytes data = noise(100000);
    CFileWriter writer;
    ASSERT_TRUE(succeeded(writer.open(name, 0, false)));
    ASSERT_TRUE(succeeded(writer.writeCompressedData(CByteBuffer(data), 5)));
    ASSERT_TRUE(succeeded(writer.close()));
    CFileReader reader;
    CByteBuffer out;
    ASSERT_TRUE(succeeded(reader.open(name, 0)));
    ASSERT_TRUE(succeeded(reader.readCompressedData(out, 5)));
    EXPECT_TRUE(std::ranges::equal(out.bytes(), data));
}

} // namespace qel
