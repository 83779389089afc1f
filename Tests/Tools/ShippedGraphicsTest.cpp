#include "GraphicsCompiler/GraphicsFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

} // namespace

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

} // namespace qel::tools
