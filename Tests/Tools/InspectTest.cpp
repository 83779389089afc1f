#include "ToolTestSupport.h"

#include "CAudioParamStorage.h"
#include "CAudioPresetBank.h"
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

TEST_F(Inspect, ShowsStringsAndPresetsAndRefusesDamage)
{
    const auto bytesOf = [](const auto& save) {
        CMemoryWriteBuffer buffer;
        EXPECT_FALSE(save(buffer));
        CByteBuffer bytes;
        buffer.copyTo(bytes);
        return bytes;
    };
    CAudioPreset preset("X:One");
    CAudioParamStorage values;
    values.format(2, CAudioParamStorage::kFloat);
    const double numbers[] = {0.1, -3.0};
    values.write({.group = 1, .count = 1, .esize = 2, .values = numbers});
    ASSERT_FALSE(preset.setValues("pair", "audio.pair", values));
    CAudioParamStorage text;
    text.format(1, CAudioParamStorage::kString);
    CAudioParamData pool;
    const double id = pool.addString("a\"b");
    text.write({.count = 1, .dtype = CAudioParamStorage::kString, .values = &id, .pool = &pool});
    ASSERT_FALSE(preset.setValues("text", "audio.text", text));
    CAudioPresetBank bank;
    bank.setName("My list");
    bank.add(preset);

    const std::string entries = "pair = {} {0.1, -3} in entries of 2, declared at \"audio.pair\"\n"
                                "    text = {\"a\\\"b\"}, declared at \"audio.text\"\n";
    const CByteBuffer list = bytesOf([&](COutputStream& stream) { return bank.saveList(stream); });
    EXPECT_EQ(printed("alst", list.bytes()),
              "name \"My list\", 1 presets\n0 \"X:One\", 2 entries\n    " + entries);
    EXPECT_EQ(printed("abnk", list.bytes().subspan(4)), printed("alst", list.bytes()));
    EXPECT_TRUE(printed("aprs", bytesOf([&](COutputStream& stream) { return preset.save(stream); }).bytes())
                    .starts_with("name \"X:One\", 2 entries\npair = "));
    EXPECT_EQ(printed("dstr", list.bytes().subspan(4, 11)), "\"My list\"\n");
    EXPECT_THROW(printed("dstr", list.bytes().first(3)), CToolError);
    EXPECT_THROW(printed("alst", list.bytes().first(list.size() - 1)), CToolError);
    EXPECT_EQ(printed("zzzz", list.bytes()), "unknown");
}

} // namespace qel::tools
