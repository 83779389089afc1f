#include "StreamRig.h"
#include "TemporaryFolder.h"

#include "Streams/CFileWriter.h"
#include "Streams/CResourceReader.h"

#include <filesystem>

namespace qel {

namespace {

class FileStreams : public ::testing::Test
{
protected:
    CString path(const std::string& name) const { return CString::fromUtf8(folder_.path(name)); }
    void writeFile(const CString& name, std::string_view text)
    {
        CFileWriter writer;
        ASSERT_TRUE(succeeded(writer.open(name, 0, false)));
        ASSERT_TRUE(succeeded(writer.write(text.data(), text.size())));
        ASSERT_TRUE(succeeded(writer.close()));
    }

    test::TemporaryFolder folder_;
};

} // namespace

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

} // namespace qel
