// Layouts worked out by hand.
#include "LayoutRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

struct Expected
{
    const char* path; // from the root on
    CRect rect;
};

struct SmallTree
{
    const char* title;
    double scale;
    const char* rootAttributes;
    const char* views;
    std::vector<Expected> expected;
};

void PrintTo(const SmallTree& layout, std::ostream* out)
{
    *out << layout.title << " at " << layout.scale;
}

// A window with a title, a status line, a panel at the left and content: docked to all kinds of sides.
constexpr const char* kWindow = R"(
    <v n="title" placement="top" width="full" height="30"/>
    <v n="status" placement="bottom" width="full" height="20"/>
    <v n="side" placement="left" width="50%" height="full"/>
    <v n="c" placement="full" width="full" height="full" outer-border="2"/>)";

// Borders are whole pixels at every scale, sizes are not.
constexpr const char* kBorders = R"(
    <v n="p" placement="left" inner-border="3 L2 *R-1" outer-border="-2 T7">
      <v n="a" width="43" height="7" outer-border="L1"/><v n="b" width="20" height="21"/>
    </v>
    <v n="q" placement="left" width="20%" height="balanced" outer-border="B5"/>)";

const SmallTree kCases[] = {
    {"docking",
     1.0,
     "",
     kWindow,
     {{"", {0, 0, 400, 300}},
      {".title", {0, 0, 400, 30}},
      {".status", {0, 280, 400, 20}},
      {".side", {0, 30, 200, 250}},
      {".c", {202, 32, 196, 246}}}},
    {"docking",
     0.8,
     "",
     kWindow,
     {{"", {0, 0, 320, 240}},
      {".title", {0, 0, 320, 24}},
      {".status", {0, 224, 320, 16}},
      {".side", {0, 24, 160, 200}},
      {".c", {162, 26, 156, 196}}}},
    // The status line lies at 37.5 + round(337.5 - 25).
    {"docking",
     1.25,
     "",
     kWindow,
     {{"", {0, 0, 500, 375}},
      {".title", {0, 0, 500, 37.5}},
      {".status", {0, 351, 500, 25}},
      {".side", {0, 38, 250, 312.5}},
      {".c", {253, 41, 244, 306.5}}}},

    // p: inner left 2, top 3, right 2, bottom 3; outer -2 but for 7 at the top.
    {"borders",
     1.0,
     "",
     kBorders,
     {{".p", {-2, 7, 68, 27}},
      {".p.a", {1, 10, 43, 7}},
      {".p.b", {44, 10, 20, 21}},
      {".q", {64, 0, 80, 145}}}},
    // Inner left 2, top 2, right 2 - 1, bottom 2; outer -2, top 6; a's left 1.
    {"borders",
     0.8,
     "",
     kBorders,
     {{".p", {-2, 6, 54.4, 20.8}},
      {".p.a", {1, 8, 34.4, 5.6}},
      {".p.b", {35, 8, 16, 16.8}},
      {".q", {50, 0, 64, 116}}}},
    // Inner left 3, top 4, right 4 - 1, bottom 4; outer -3, top 9; a's left 1.
    {"borders",
     1.25,
     "",
     kBorders,
     {{".p", {-3, 9, 85.75, 34.25}},
      {".p.a", {1, 13, 53.75, 8.75}},
      {".p.b", {55, 13, 25, 26.25}},
      {".q", {80, 0, 100, 181.5}}}},

    {"window of the design size",
     0.8,
     R"(width="540" height="373")",
     R"(<v n="c" width="100%" height="full"/>)",
     {{"", {0, 0, 432, 298.4}}, {".c", {0, 0, 432, 298.4}}}},
    {"window of the design size", 1.25, R"(width="540" height="373")", "", {{"", {0, 0, 675, 466.25}}}},

    {"a window as large as what is docked in it",
     1.0,
     R"(width="compact" height="compact")",
     R"(<v n="title" placement="top" width="100" height="30"/>
        <v n="status" placement="bottom" width="60" height="20"/>
        <v n="c" placement="full" inner-border="3">
          <v n="b1" placement="left" width="50" height="40" outer-border="2"/>
          <v n="b2" placement="left" width="50" height="30" outer-border="2"/>
          <v n="flow" width="7" height="50"/>
          <v n="hidden" placement="top" width="500" height="500" is-visible="0"/>
          <v n="over" placement="overlay" width="500" height="500"/>
        </v>)",
     {{"", {0, 0, 121, 106}},
      {".title", {0, 0, 100, 30}},
      {".status", {0, 86, 60, 20}},
      {".c", {0, 30, 121, 56}},
      {".c.b1", {5, 35, 50, 40}},
      {".c.b2", {59, 35, 50, 30}},
      {".c.flow", {111, 33, 7, 50}},
      {".c.hidden", {}},
      {".c.over", {3, 33, 500, 500}}}},
    {"no content",
     1.0,
     "",
     R"(<v n="a" inner-border="3 R5"/><v n="b" inner-border="3" min-width="20" min-height="2"/>
        <v n="c" compact-width="30" compact-height="x"/>)",
     {{".a", {0, 0, 8, 6}}, {".b", {8, 0, 20, 6}}, {".c", {}}}},

    {"percentages of a run",
     1.0,
     "",
     R"(<v n="a" placement="left" width="25%" height="full"/>
        <v n="hidden" placement="top" width="full" height="50%" is-visible="false"/>
        <v n="over" placement="overlay" width="full" height="10"/>
        <v n="b" placement="left" width="25%" height="full"/>
        <v n="c" placement="left" width="50%" height="100" alignment-v="center"/>
        <v n="d" placement="right" width="50%" height="full"/>
        <v n="f" placement="full" width="100%" height="50%" alignment-h="right" alignment-v="bottom"/>
        <v n="g" placement="left" width="50%" height="150%"/>
        <v n="flow" width="full" height="-5%"/><v n="flow2" width="full" height="10"/>)",
     {{".a", {0, 0, 100, 300}},
      {".hidden", {}},
      {".over", {0, 0, 400, 10}},
      {".b", {100, 0, 100, 300}},
      {".c", {200, 100, 100, 100}},
      {".d", {350, 0, 50, 300}},
      {".f", {300, 150, 50, 150}},
      {".g", {300, 0, 25, 300}},
      {".flow", {}},
      {".flow2", {350, 0, 25, 10}}}},
    {"balanced among all that take room",
     1.0,
     "",
     R"(<v n="a" placement="top" width="full" height="balanced" outer-border="1"/>
        <v n="b" placement="top" width="balanced" height="balanced" min-height="110"/>
        <v n="flow" width="10" height="balanced"/>
        <v n="over" placement="overlay" width="10" height="balanced" outer-border="4"/>
        <v n="hidden" placement="top" is-visible="0"/>)",
     // flow's share is what docking left.
     {{".a", {1, 1, 398, 98}},
      {".b", {0, 100, 400.0 / 3, 110}},
      {".flow", {0, 210, 10, 30}},
      {".over", {4, 4, 10, 92}}}},
    {"least sizes",
     1.0,
     "",
     R"(<v n="a" placement="left" width="10%" min-width="60" height="1" min-height="50%"/>
        <v n="b" placement="left" width="5" min-width="compact" compact-width="20" inner-border="3" height="1"
           min-height="balanced" outer-border="T2"/>
        <v n="c" placement="left" width="full" min-width="full" height="x" min-height="12%%"/>)",
     {{".a", {0, 0, 60, 150}}, {".b", {60, 2, 26, 98}}, {".c", {}}}},

    {"docked to the far sides, centred",
     1.0,
     "",
     R"(<v n="r" placement="right" width="101" height="10" alignment-h="center" alignment-v="center"/>
        <v n="b" placement="bottom" width="50.5" height="100.4" alignment-v="center" alignment-h="center"/>
        <v n="l" placement="left" width="10" height="10" alignment-h="right" alignment-v="bottom"/>)",
     // r: round(299) / 2 = 149.5; b: round(199.6) / 2 = 100 and (299 - 50.5) / 2 = 124.25.
     {{".r", {150, 145, 101, 10}}, {".b", {124, 100, 50.5, 100.4}}, {".l", {0, 190, 10, 10}}}},

    {"rows",
     1.0,
     R"(inline-alignment-h="center" inline-alignment-v="bottom")",
     R"(<v n="a" width="50" height="20" outer-border="5" alignment-v="center"/>
        <v n="skip" width="9" height="9" is-visible="0" is-new-inline-row="1"/>
        <v n="b" width="30" height="41" is-new-inline-row="1"/>
        <v n="dock" placement="left" width="0" height="0" is-new-inline-row="1"/>
        <v n="c" width="100" height="10" alignment-v="bottom"/><v n="d" width="1" height="5" alignment-v="bottom"/>)",
     // The free 400 - 90 and 400 - 101 are halved and rounded; the stack of 41 + 10 ends at 300.
     {{".a", {160, 260, 50, 20}},
      {".b", {215, 249, 30, 41}},
      {".c", {150, 290, 100, 10}},
      {".d", {250, 295, 1, 5}}}},
    {"columns, and a row that is too long",
     1.0,
     R"(inline-alignment-h="right")",
     R"(<v n="p" is-inline-vertical="1" inline-alignment-h="center" inline-alignment-v="center" min-height="40"
          min-width="81" alignment-v="center">
          <v n="a" width="30" height="10" is-new-inline-row="1"/><v n="b" width="20" height="10" alignment-h="right"/>
          <v n="c" width="40" height="15"/></v>
        <v n="q" width="350" height="50"/>)",
     // Columns of 30 and 40 in 81: round(5.5) = 6; columns of 10 and 25 high in 40.
     {{".p", {-31, 5, 81, 40}},
      {".p.a", {-25, 20, 30, 10}},
      {".p.b", {25, 13, 20, 10}},
      {".p.c", {5, 23, 40, 15}},
      {".q", {50, 0, 350, 50}}}},

    {"scrolling",
     1.0,
     "",
     R"(<v n="s" placement="left" width="200" height="100" is-scrollable="1" scroller-width="16"
           scroller-height="10" ratio-x="0.5" ratio-y="0.1" min-ratio-y="0.25" offset-x="0.5" offset-y="0.9"
           inner-border="2">
          <v n="h" placement="scroller-h"/><v n="v" placement="scroller-v" width="12" height="5"/>
          <v n="p" placement="scroller-p"/>
          <v n="over" placement="overlay" width="full" height="full"/>
          <v n="right" placement="right" width="20.4" height="50%"/><v n="flow" width="10" height="10"/>
        </v>
        <v n="compact" is-scrollable="1" scroller-width="16" scroller-height="10" inner-border="1">
          <v n="a" width="30" height="20"/></v>)",
     // The extent is 368 x 360 with 184 and 324 of it scrolled away.
     {{".s", {0, 0, 200, 100}},
      {".s.h", {0, 90, 184, 10}},
      {".s.v", {188, 0, 12, 90}},
      {".s.p", {184, 90, 16, 10}},
      {".s.over", {-182, -322, 364, 356}},
      {".s.right", {162, -322, 20.4, 178}},
      {".s.flow", {-182, -322, 10, 10}},
      {".compact", {200, 0, 48, 32}},
      {".compact.a", {201, 1, 30, 20}}}},
    {"overlays are not put on whole pixels",
     1.0,
     "",
     R"(<v n="s" width="101" height="50" is-scrollable="1" ratio-x="0.5" offset-x="0.25">
          <v n="over" placement="overlay" width="10" height="10" alignment-h="center"/>
          <v n="flow" width="10" height="10"/></v>)",
     {{".s.over", {-50.5, 0, 10, 10}}, {".s.flow", {-51, 0, 10, 10}}}},

    {"over other views",
     1.0,
     R"(inner-border="10")",
     R"(<v n="a" placement="left" width="100" height="50" outer-border="5">
          <v n="window" placement="window-overlay" width="full" height="50%" outer-border="1"/></v>
        <v n="m" placement="match" placement-match="^a" width="7" height="7" outer-border="1 L2"/>
        <v n="mm" placement="match" placement-match="root.a.window" is-visible="1"/>)",
     {{".a", {15, 15, 100, 50}},
      {".a.window", {1, 1, 398, 148}},
      {".m", {17, 16, 97, 48}},
      {".mm", {1, 1, 398, 148}}}},
    {"hidden inside hidden",
     1.0,
     "",
     R"(<v n="p" width="50" height="50" is-visible="0"><v n="a" width="9" height="9"><v n="b" width="9" height="9"/></v></v>
        <v n="q" width="20" height="20"/>)",
     {{".p", {}}, {".p.a", {}}, {".p.a.b", {}}, {".q", {0, 0, 20, 20}}}},
};

class LayoutCase : public ::testing::TestWithParam<SmallTree>
{};

TEST_P(LayoutCase, IsAsWorkedOutByHand)
{
    const SmallTree& layout = GetParam();
    const test::LayoutRig tree(layout.views, layout.rootAttributes, layout.scale);
    for (const auto& [path, expected] : layout.expected) {
        const CRect rect = tree.rect(path);
        EXPECT_TRUE(std::abs(rect.x - expected.x) < 1e-3 && std::abs(rect.y - expected.y) < 1e-3 &&
                    std::abs(rect.width - expected.width) < 1e-3 &&
                    std::abs(rect.height - expected.height) < 1e-3)
            << "root" << path << ": " << ::testing::PrintToString(rect) << ", and not "
            << ::testing::PrintToString(expected);
    }
}

INSTANTIATE_TEST_SUITE_P(All, LayoutCase, ::testing::ValuesIn(kCases));

} // namespace
} // namespace qel
