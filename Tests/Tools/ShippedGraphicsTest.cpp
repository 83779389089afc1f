#include "GraphicsCompiler/GraphicsFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

// What the tree, the layout and the drawing take for granted about the files that are built in.
namespace qel::tools {

namespace {

const std::string kFolder = DRUMFELL_BUILT_RESOURCES "/";
const std::string kPalettes[] = {"Default", "Blue", "Green", "Military", "Red"};

template <typename File>
File read(const std::string& name)
{
    return std::get<File>(readGraphicsFile(kFolder + name));
}

// --- contrast, by the definition of the Web Content Accessibility Guidelines 2.1

struct Rgb
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

Rgb entry(const CPaletteColour& colour, std::size_t value)
{
    return {double(colour.red[value]), double(colour.green[value]), double(colour.blue[value])};
}

double luminance(const Rgb& rgb)
{
    const auto linear = [](double byte) {
        const double share = byte / 255;
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(rgb.red) + 0.7152 * linear(rgb.green) + 0.0722 * linear(rgb.blue);
}

double contrast(const Rgb& a, const Rgb& b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

// The colours that a name has in a state: one, or all frames of a pulse.
std::vector<const CPaletteColour*> coloursOf(const CPaletteFile& palette, const std::string& name)
{
    if (const CPaletteColour* plain = palette.find(name)) {
        return {plain};
    }
    std::vector<const CPaletteColour*> frames;
    for (int frame = 0; frame < 32; ++frame) {
        if (const CPaletteColour* colour = palette.find(name + "|" + std::to_string(frame))) {
            frames.push_back(colour);
        }
    }
    return frames;
}

constexpr const char* kStates[] = {"", "_Hover", "_Active", "_ActiveHover"};

// Texts on a ground that has the same state, and on one that has none. A surface is looked at where its body
// is darkest and lightest, a plain fill at its end.
struct Legibility
{
    std::vector<std::string> texts;
    std::string ground;
    bool isSameState;
    std::vector<std::size_t> values;
    double least;
};

const Legibility kLegibility[] = {
    {{"ButtonText"}, "Button", true, {128, 184}, 4.5},
    {{"ButtonABText", "ButtonABTextInactive"}, "ButtonAB", true, {128, 184}, 4.5},
    {{"ButtonUnderlayText"}, "ButtonUnderlay", true, {128, 184}, 4.5},
    {{"ComplexButtonText"}, "ComplexButton", true, {128, 184}, 4.5},
    {{"BypassText"}, "Bypass", true, {128, 184}, 4.5},
    {{"AlarmText"}, "Alarm", true, {128, 184}, 4.5},
    {{"SelectionText"}, "Selection", true, {255}, 4.5},
    {{"WindowTitleText"}, "WindowTitle", true, {128, 184}, 4.5},
    {{"PanelText", "BackgroundText", "KnobCaption", "KnobText", "KnobLabelsText", "ActionText",
      "ActionAltText", "ActionErrorText", "Action", "Default"},
     "Panel",
     false,
     {128, 184},
     4.5},
    {{"BackgroundText", "KnobText", "KnobLabelsText", "ActionText", "ActionErrorText", "Default"},
     "Background",
     false,
     {255},
     4.5},
    {{"Action", "ActionText"}, "Button", false, {128, 184}, 4.5},
    {{"PalIconDefaultText"}, "PalIconDefaultOuter", true, {255}, 4.5},
    {{"PalIconMilitaryText"}, "PalIconMilitaryOuter", true, {255}, 4.5},
    {{"Custom1Text"}, "Custom1", true, {255}, 4.5},
    {{"Custom2Text"}, "Custom2", true, {255}, 4.5},
    {{"Custom4Text"}, "Custom4", true, {255}, 4.5},
    {{"Custom5Text"}, "Custom5", true, {255}, 4.5},
    {{"DisabledText"}, "Panel", false, {128, 184}, 3.0},
    {{"DisabledText"}, "Background", false, {255}, 3.0},
    {{"DisabledText"}, "Disabled", false, {128, 184}, 3.0},
};

void expectLegible(const CPaletteFile& palette, const Legibility& rule, const std::string& text,
                   const char* state)
{
    for (const CPaletteColour* ink : coloursOf(palette, text + state)) {
        for (const CPaletteColour* ground :
             coloursOf(palette, rule.ground + (rule.isSameState ? state : ""))) {
            for (const std::size_t value : rule.values) {
                EXPECT_GE(contrast(entry(*ink, 255), entry(*ground, value)), rule.least)
                    << ink->name << " on " << ground->name << " at " << value;
            }
        }
    }
}

// --- image sets

struct ExpectedSet
{
    std::size_t images = 0;
    std::string ranges; // "name first-last ..." where the ids are settled, else names alone
};

const std::string kFrame = "[] 1-8";
const std::map<std::string, ExpectedSet> kSets = {
    {"autoscroll", {2, "[Left] [Right]"}},
    {"brintal", {1, ""}},
    {"button",
     {40, "[] [Active] [Arrow] [ArrowRight] [ArrowSm] [ArrowUp] [ArrowUpDn] [DynListArrow] [HR] [IconCMD] "
          "[IconCTRL] "
          "[IconLMB] [IconLMBD] [IconRMB] [IconRMBD] [IconWheel] [Lamp] [LampOff] [Pushed]"}},
    {"buttonab", {3, "[] [Active] [B] [Pushed]"}},
    {"close", {2, "[] [Pushed]"}},
    {"csurface", {38, ""}},
    {"editbox", {8, kFrame}},
    {"frame", {8, kFrame}},
    {"groupcaption", {3, "[] 1-8 [Pushed]"}},
    {"history", {6, "[] [Active] [Pushed]"}},
    {"instancename", {8, kFrame}},
    {"knob", {86, "[] 0-84 [LabelBG] 100-100"}},
    {"levelmeter", {8, kFrame}},
    {"listoutline", {1, "[Arrow]"}},
    {"palicon", {2, "[] [Active] [Pushed]"}},
    {"popup", {8, kFrame}},
    {"popup2", {8, kFrame}},
    {"ruler", {24, "[]"}},
    {"scroller",
     {22, "[HBar] [HBase] [HButtonNext] [HButtonNextPushed] [HButtonPrev] [HButtonPrevPushed] [Pan] "
          "[PanPushed] [VBar] "
          "[VBase] [VButtonNext] [VButtonNextPushed] [VButtonPrev] [VButtonPrevPushed]"}},
    {"statusbar", {8, kFrame}},
    {"texture", {1, ""}},
};

std::string rangeText(const CImageSetFile& set, const std::string& expected)
{
    std::map<std::string, const CImageRange*> byName;
    for (const CImageRange& range : set.ranges) {
        byName[range.name] = &range;
    }
    std::string text;
    for (const auto& [name, range] : byName) {
        const std::string shown = "[" + name + "]";
        const std::string ids =
            shown + " " + std::to_string(range->first) + "-" + std::to_string(range->last);
        const bool isSettled =
            expected.find(shown + " 0") != expected.npos || expected.find(shown + " 1") != expected.npos;
        text += (text.empty() ? "" : " ") + (isSettled ? ids : shown);
    }
    return text;
}

} // namespace

TEST(ShippedGraphics, TenFontsShareTheirCharactersAndHaveTheirLines)
{
    struct Line
    {
        std::string font;
        std::uint32_t height, ascentGap, descentGap;
    };
    const Line lines[] = {{"base", 14, 3, 3},    {"base_b", 14, 3, 3},   {"micro", 14, 3, 2},
                          {"micro_b", 14, 3, 2}, {"micro-sm", 11, 3, 2}, {"micro-sm_b", 11, 3, 2},
                          {"small", 10, 3, 3},   {"small_b", 10, 3, 3},  {"title", 16, 5, 4},
                          {"title_b", 17, 5, 5}};
    std::vector<std::uint32_t> characters;
    for (const auto& [name, height, ascentGap, descentGap] : lines) {
        SCOPED_TRACE(name);
        const auto font = read<CFontFile>(name + ".fnt");
        EXPECT_EQ(font.lineHeight, height);
        EXPECT_EQ(font.ascentGap, ascentGap);
        EXPECT_EQ(font.descentGap, descentGap);
        EXPECT_TRUE(font.glyphs.ranges.empty());
        std::vector<std::uint32_t> ids;
        std::set<double> digitAdvances[3];
        for (const CImage& glyph : font.glyphs.images) {
            ids.push_back(glyph.id);
            ASSERT_EQ(glyph.layers.size(), 1u);
            ASSERT_EQ(glyph.layers[0].bytesPerPixel, 1u);
            ASSERT_EQ(glyph.layers[0].variants.size(), 3u);
            for (std::size_t i = 0; i < 3; ++i) {
                const CImageVariant& variant = glyph.layers[0].variants[i];
                EXPECT_EQ(variant.scale, kGraphicsScales[i]);
                EXPECT_GT(variant.advance, 0.0);
                // All of a line's ink lies within its height and gaps.
                EXPECT_LE(variant.raster.height,
                          std::lround((height + ascentGap + descentGap) * variant.scale));
                if (glyph.id >= '0' && glyph.id <= '9') {
                    digitAdvances[i].insert(variant.advance);
                }
            }
        }
        EXPECT_EQ(ids.size(), 188u);
        EXPECT_EQ(ids.front(), 32u);
        EXPECT_EQ(ids.back(), 966u);
        characters = characters.empty() ? ids : characters;
        EXPECT_EQ(ids, characters);
        for (const auto& advances : digitAdvances) {
            EXPECT_EQ(advances.size(), 1u);
        }
    }
}

// A text drawn bold must differ at a glance: it has more ink.
TEST(ShippedGraphics, BoldFontsAreBold)
{
    const auto ink = [](const CFontFile& font, std::size_t variant) {
        double sum = 0;
        for (const CImage& glyph : font.glyphs.images) {
            for (const std::uint8_t alpha : glyph.layers[0].variants[variant].raster.pixels) {
                sum += alpha;
            }
        }
        return sum;
    };
    for (const std::string name : {"base", "micro", "micro-sm", "small", "title"}) {
        const auto regular = read<CFontFile>(name + ".fnt");
        const auto bold = read<CFontFile>(name + "_b.fnt");
        for (std::size_t variant = 0; variant < 3; ++variant) {
            EXPECT_GT(ink(bold, variant), 1.2 * ink(regular, variant)) << name;
        }
    }
}

TEST(ShippedGraphics, BrushesHaveTheAreaOfTheirDiscs)
{
    const auto file = read<CBrushSetFile>("brushes.bs");
    std::string shapes;
    for (const CBrush& brush : file.brushes) {
        EXPECT_EQ(brush.oversampling, 4u);
        for (const CBrushVariant& variant : brush.variants) {
            char text[40];
            std::snprintf(text, sizeof text, "%u %.3f, ", variant.size, variant.radius);
            shapes += text;
            const double radius = brush.width * variant.scale / 2;
            const std::size_t stamp = std::size_t{variant.size} * variant.size;
            ASSERT_EQ(variant.table.size(), 256 * stamp);
            for (std::size_t at = 0; at < variant.table.size(); at += stamp) {
                double area = 0;
                for (std::size_t i = 0; i < stamp; ++i) {
                    area += variant.table[at + i] / 255.0;
                }
                ASSERT_NEAR(area, std::acos(-1.0) * radius * radius, 0.03)
                    << brush.width << " " << variant.scale;
            }
        }
    }
    EXPECT_EQ(shapes, "2 0.500, 2 0.500, 2 0.500, 4 1.092, 4 1.240, 4 1.425, 5 1.684, 5 1.980, 6 2.350, ");
}

TEST(ShippedGraphics, PalettesHoldTheSameNamesAndPulseSmoothly)
{
    std::vector<std::string> names;
    for (const std::string& name : kPalettes) {
        SCOPED_TRACE(name);
        const auto palette = read<CPaletteFile>(name + ".pal");
        std::vector<std::string> own;
        for (const CPaletteColour& colour : palette.colours) {
            own.push_back(colour.name);
            const std::set<double> opacities = {1.0, 0.75, 0.7, 0.5, 0.25};
            EXPECT_TRUE(opacities.contains(colour.opacity)) << colour.name;
        }
        EXPECT_EQ(own.size(), 569u);
        names = names.empty() ? own : names;
        EXPECT_EQ(own, names);
        std::set<std::string> tables;
        for (const CFrameTable& table : palette.frameTables) {
            tables.insert(table.name);
            EXPECT_EQ(table.frames, 32u);
            // A colour of the table's own name would be taken instead of the frames.
            EXPECT_EQ(palette.find(table.name), nullptr);
            const auto frames = coloursOf(palette, table.name);
            ASSERT_EQ(frames.size(), 32u);
            EXPECT_NE(frames.front()->green[255], frames.back()->green[255]);
            for (std::size_t i = 1; i < frames.size(); ++i) {
                for (const std::size_t value : {std::size_t{128}, std::size_t{255}}) {
                    EXPECT_NEAR(frames[i]->red[value], frames[i - 1]->red[value], 8);
                    EXPECT_NEAR(frames[i]->green[value], frames[i - 1]->green[value], 8);
                    EXPECT_NEAR(frames[i]->blue[value], frames[i - 1]->blue[value], 8);
                }
            }
        }
        EXPECT_EQ(tables, (std::set<std::string>{"Alarm", "Alarm_Active", "Alarm_ActiveHover", "Alarm_Hover",
                                                 "Bypass_Active", "Bypass_ActiveHover"}));
    }
}

TEST(ShippedGraphics, EveryTextCanBeReadOnItsGroundInEveryPalette)
{
    for (const std::string& name : kPalettes) {
        SCOPED_TRACE(name);
        const auto palette = read<CPaletteFile>(name + ".pal");
        for (const Legibility& rule : kLegibility) {
            for (const std::string& text : rule.texts) {
                ASSERT_FALSE(coloursOf(palette, text).empty()) << text;
                for (const char* state : kStates) {
                    expectLegible(palette, rule, text, state);
                }
            }
        }
    }
}

TEST(ShippedGraphics, ImageSetsHaveTheirImagesRangesAndScales)
{
    for (const auto& [name, expected] : kSets) {
        SCOPED_TRACE(name);
        const auto set = read<CImageSetFile>(name + ".is");
        EXPECT_EQ(set.images.size(), expected.images);
        EXPECT_EQ(rangeText(set, expected.ranges), expected.ranges);
        for (const CImage& image : set.images) {
            EXPECT_FALSE(image.layers.empty());
            for (const CImageLayer& layer : image.layers) {
                EXPECT_EQ(layer.bytesPerPixel, name == "brintal" ? 4u : 2u);
                ASSERT_EQ(layer.variants.size(), 3u);
                for (std::size_t i = 0; i < 3; ++i) {
                    EXPECT_EQ(layer.variants[i].scale, kGraphicsScales[i]);
                    EXPECT_EQ(layer.variants[i].advance, 0.0);
                }
            }
        }
    }
}

TEST(ShippedGraphics, ImagesHaveTheSizesThatTheLayoutCountsOn)
{
    struct Size
    {
        std::string set;
        std::size_t layers;
        int width, height; // of the first image, at 0.8
    };
    for (const auto& [name, layers, width, height] :
         {Size{"frame", 1, 48, 16}, Size{"popup", 1, 48, 16}, Size{"statusbar", 1, 48, 16},
          Size{"levelmeter", 2, 48, 16}, Size{"close", 2, 20, 20}, Size{"palicon", 4, 29, 19},
          Size{"knob", 3, 60, 60}}) {
        SCOPED_TRACE(name);
        const auto set = read<CImageSetFile>(name + ".is");
        EXPECT_EQ(set.images[0].layers.size(), layers);
        EXPECT_EQ(set.images[0].layers[0].variants[0].width, width);
        EXPECT_EQ(set.images[0].layers[0].variants[0].height, height);
    }
    const auto knob = read<CImageSetFile>("knob.is");
    EXPECT_EQ(knob.images[0].layers[0].variants[1].width, 74);
    EXPECT_EQ(knob.images[84].layers[2].variants[2].width, 93);
    const auto close = read<CImageSetFile>("close.is");
    EXPECT_EQ(close.images[0].layers[0].variants[0].raster.width, 33);
    EXPECT_EQ(close.images[0].layers[0].variants[0].raster.height, 33);
    EXPECT_EQ(read<CImageSetFile>("texture.is").images[0].layers[0].variants[1].width, 256);
    std::string ids;
    for (const CImage& image : read<CImageSetFile>("groupcaption.is").images) {
        ids += std::to_string(image.id) + " ";
    }
    EXPECT_EQ(ids, "4 7 8 ");
    EXPECT_EQ(read<CImageSetFile>("listoutline.is").images[0].id, 10u);
}

} // namespace qel::tools
