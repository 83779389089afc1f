#include "Streams/CResourceReader.h"
#include "Streams/ResourceMap.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace qel {

// The build embeds Resources/test.manifest and one file listed in its own CMake code into this program.
TEST(EmbeddedResources, AreFoundUnderTheirListedNamesWithEveryByte)
{
    registerResourceDirectory(drumfellResourceDirectory);
    std::ifstream file(DRUMFELL_TEST_RESOURCES "/small.bin", std::ios::binary);
    const std::string original(std::istreambuf_iterator<char>(file), {});
    ASSERT_EQ(original.size(), 26u);
    for (const char* name : {"../../../Gfx/Imagesets/small.is", "Small.tree", "direct"}) {
        const auto bytes = findResource(name);
        ASSERT_TRUE(bytes) << name;
        EXPECT_EQ(std::string(bytes->begin(), bytes->end()), original) << name;
    }
    const auto empty = findResource("empty name with blanks");
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->empty());
    EXPECT_FALSE(findResource("small.is"));
}

} // namespace qel
