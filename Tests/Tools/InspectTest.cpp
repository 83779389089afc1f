#include "ToolTestSupport.h"

#include "Inspect/FileKinds.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "TreeCompiler/ToolError.h"

#include <algorithm>
#include <sstream>

namespace qel::tools {

namespace {

std::string printed(std::string_view id, std::span<const std::uint8_t> payload)
{
    const auto kinds = fileKinds();
    const auto kind = std::ranges::find(kinds, id, &CFileKind::id);
    if (kind == kinds.end()) {
        return "unknown";
    }
    std::ostringstream out;
    kind->print(payload, out);
    return out.str();
}

} // namespace

class Inspect : public CFolderTest
{};

TEST_F(Inspect, ShowsATreeWithTemplatesAndAwkwardText)
{
    const CTreeNode root =
        compiled(write("in.xml", "<tree v='1'><a name='n' k='q&quot;&#10;'/>"
                                 "<template name='t' content-tag='c'><d/></template></tree>"));
    EXPECT_EQ(printed("cxml", encodeTree(root)), "5 nodes, 1 templates, 2 attributes\n"
                                                 "(no tag)\n"
                                                 "  .v = \"1\"\n"
                                                 "  a \"n\"\n"
                                                 "    .k = \"q\\\"\\x0A\"\n"
                                                 "  template \"t\" [template of c, flag 1]\n"
                                                 "    c\n"
                                                 "      d\n");
}

TEST_F(Inspect, ShowsStringsAndListHeadsAndRefusesDamage)
{
    CMemoryWriteBuffer buffer;
    EXPECT_FALSE(buffer.writeU32(1));
    EXPECT_FALSE(buffer.writeString("My list"));
    EXPECT_FALSE(buffer.writeU32(7));
    CByteBuffer list;
    buffer.copyTo(list);
    EXPECT_EQ(printed("alst", list.bytes()), "version 1, name \"My list\", 7 presets\n");
    EXPECT_EQ(printed("dstr", list.bytes().subspan(4, 11)), "\"My list\"\n");
    EXPECT_THROW(printed("dstr", list.bytes().first(3)), CToolError);
    EXPECT_THROW(printed("alst", list.bytes().first(list.size() - 1)), CToolError);
    EXPECT_EQ(printed("zzzz", list.bytes()), "unknown");
}

} // namespace qel::tools
