#include "FolderFixture.h"

#include "GraphicsCompiler/GraphicsSource.h"

namespace qel::tools {

using GraphicsSource = FolderFixture;

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
