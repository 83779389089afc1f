#include "ToolTestSupport.h"

#include "GraphicsCompiler/GraphicsSource.h"

namespace qel::tools {

namespace {

class GraphicsSource : public CFolderTest
{
protected:
    // All messages about the file, one a line, without the folder.
    std::string faults(const std::string& file) const
    {
        std::string text;
        for (CDiagnostic& diagnostic : compileGraphics(file).diagnostics) {
            diagnostic.file = std::filesystem::path(diagnostic.file).filename().string();
            text += diagnostic.text() + "\n";
        }
        return text;
    }
};

} // namespace

TEST_F(GraphicsSource, TellsWhereAFaultLies)
{
    write("few.xml", "<characters>\n<range first=\"65\" last=\"66\"/>\n<list text=\"A\"/></characters>");
    write("bad-scheme.xml",
          "<palette-scheme>\n<colours names=\"A\" ramp=\"none\" colour=\"accent\"/>\n"
          "<colours names=\"A\" ramp=\"none\" colour=\"mix(accent, nix, 0.5)\"/></palette-scheme>");
    const std::pair<std::string, std::string> cases[] = {
        {"<sound/>", "in.xml:1:1: the root element is none of"},
        {"<brush-set oversampling=\"4\">\n  <brush width=\"wide\"/></brush-set>",
         "in.xml:2:10: 'wide' is no number"},
        {"<brush-set oversampling=\"4\">\n<brush/></brush-set>",
         "in.xml:2:1: <brush> needs the attribute 'width'"},
        {"<brush-set oversampling=\"4\">\n<brush width=\"1\" w=\"\"/></brush-set>",
         "in.xml:2:18: <brush> has no attr"},
        {"<brush-set\n oversampling=\"99\"/>", "in.xml:2:2: 99 is outside 0 to 6"},
        {"<font face=\"No.otf\" size=\"9\" line-height=\"9\" ascent-gap=\"1\"\n descent-gap=\"1.5\"\n "
         "characters=\"few.xml\"/>",
         "in.xml:2:2: '1.5' is no whole number\nfew.xml:3:1: character 65 stands there twice\n"
         "in.xml:1:7: the face 'No.otf' is not installed"},
        {"<palette\n scheme=\"no.xml\"/>", "in.xml:2:2: there is no file 'no.xml'"},
        {"<palette scheme=\"bad-scheme.xml\">\n<key name=\"accent\" colour=\"#12\"/></palette>",
         "in.xml:2:20: '#12' is no colour: six hexadecimal digits are\n"
         "bad-scheme.xml:2:20: there is no ramp 'none'\n"
         "bad-scheme.xml:3:20: there is no ramp 'none'\n"
         "bad-scheme.xml:3:32: there is no key colour 'nix'\n"
         "bad-scheme.xml:3:1: the colour 'A' stands there twice"},
    };
    for (const auto& [text, message] : cases) {
        const std::string found = faults(write("in.xml", text));
        EXPECT_EQ(found.substr(0, message.size()), message) << text;
    }
}

TEST_F(GraphicsSource, MakesStatesRampsAndPulsesOfAScheme)
{
    write("scheme.xml", R"x(<palette-scheme>
        <key name="black" colour="#000000"/><key name="accent" colour="#010203"/>
        <ramp name="ink"><stop value="0" colour="black"/><stop value="255" colour="self"/></ramp>
        <colours names="A" ramp="ink" opacity="0.5" colour="accent" hover="mix(self, #ffffff, 0.5)"
                 active="Other.accent"/>
        <colours names="B" states="hover" ramp="ink" colour="#ff0000"/>
        <pulse name="A_Pulse" frames="3" ramp="ink" from="black" to="#640000"/></palette-scheme>)x");
    write("Other.xml", R"(<palette scheme="scheme.xml"><key name="accent" colour="#0000ff"/></palette>)");
    const auto source = compileGraphics(
        write("in.xml", R"(<palette scheme="scheme.xml"><key name="accent" colour="#ff8000"/></palette>)"));
    ASSERT_TRUE(source.diagnostics.empty()) << source.diagnostics[0].text();
    const auto& palette = std::get<CPaletteFile>(source.result);
    std::string text;
    for (const CPaletteColour& colour : palette.colours) {
        char line[80];
        std::snprintf(line, sizeof line, "%s %02x%02x%02x ", colour.name.c_str(), colour.red[255],
                      colour.green[255], colour.blue[255]);
        text += line;
    }
    EXPECT_EQ(text, "A ff8000 A_Hover ffc080 A_Active 0000ff A_ActiveHover 8080ff B ff0000 B_Hover ff0000 "
                    "A_Pulse|0 000000 A_Pulse|1 320000 A_Pulse|2 640000 ");
    EXPECT_EQ(palette.colours[0].red[51], 51);
    EXPECT_EQ(palette.colours[0].opacity, 0.5);
    EXPECT_EQ(palette.frameTables, (std::vector<CFrameTable>{{"A_Pulse", 3}}));
    EXPECT_EQ(source.files.size(), 3u); // the other palette is one of what the file depends on
}

} // namespace qel::tools
