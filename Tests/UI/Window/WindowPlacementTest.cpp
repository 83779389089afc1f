// Where windows open on the screen.
#include "CWindowPlacement.h"

#include <gtest/gtest.h>

namespace qel::test {

namespace {

using platform::PixelRect;

struct Placement
{
    const char* alignment;
    PixelRect expected;
    const char* why = "";
    PixelRect opener = {300, 250, 80, 20};
    PixelRect openerWindow = {200, 200, 540, 373};
    int width = 100;
    int height = 60;
    int lowestY = -1;
};

// A screen of 1000 x 800 with a task bar of 30 below and a panel of 50 at the left.
constexpr PixelRect kWorkArea{50, 0, 950, 770};

const Placement kCases[] = {
    {"center", {420, 356, 100, 60}},
    {"", {420, 356, 100, 60}},
    {"center", {475, 355, 100, 60}, "nothing opened it", {}, {}},
    {"center-overlay", {290, 230, 100, 60}},
    {"center-overlay", {300, 250, 80, 20}, "as large as the opener", {300, 250, 80, 20}, {}, 40, 10},
    {"cursor", {333, 444, 100, 60}},
    {"bottom", {300, 270, 100, 60}},
    {"bottom-center", {420, 270, 100, 60}},
    {"bottom-local-center", {290, 270, 100, 60}},
    {"left", {200, 250, 100, 60}},
    {"right", {380, 250, 100, 60}},
    {"opener", {611, 622, 100, 60}},

    {"bottom", {300, 710, 100, 60}, "moved up from the edge", {300, 740, 80, 20}},
    {"bottom", {300, 740, 100, 60}, "not above its limit", {300, 740, 80, 20}, {}, 100, 60, 740},
    {"bottom", {900, 270, 100, 60}, "moved in from the right", {950, 250, 80, 20}},
    {"bottom", {50, 0, 2000, 1000}, "too large: its corner shows", {950, 250, 80, 20}, {}, 2000, 1000},
    {"right", {800, 250, 100, 60}, "no room at the right", {900, 250, 80, 20}},
    {"left", {140, 250, 100, 60}, "no room at the left", {60, 250, 80, 20}},
    {"right", {60, 250, 940, 60}, "room on neither side", {300, 250, 80, 20}, {}, 940, 60},
};

TEST(WindowPlacement, EveryAlignmentIsKeptInTheWorkArea)
{
    for (const Placement& each : kCases) {
        SCOPED_TRACE(std::string(each.alignment) + " " + each.why);
        CWindowPlacement placement;
        placement.workArea = kWorkArea;
        placement.opener = each.opener;
        placement.openerWindow = each.openerWindow;
        placement.pointerX = 333;
        placement.pointerY = 444;
        placement.windowX = 611;
        placement.windowY = 622;
        placement.lowestY = each.lowestY;
        CWindowPlacement::Alignment alignment;
        ASSERT_FALSE(CWindowPlacement::parse("w", each.alignment, alignment));
        const PixelRect place = placement.place(alignment, each.width, each.height);
        EXPECT_EQ(place.x, each.expected.x);
        EXPECT_EQ(place.y, each.expected.y);
        EXPECT_EQ(place.width, each.expected.width);
        EXPECT_EQ(place.height, each.expected.height);

        // A shift moves what is not at an edge.
        placement.workArea = {};
        placement.lowestY = -1;
        const PixelRect unshifted = placement.place(alignment, each.width, each.height);
        placement.shiftX = -7;
        placement.shiftY = 3;
        const PixelRect shifted = placement.place(alignment, each.width, each.height);
        EXPECT_EQ(shifted.x, unshifted.x - 7);
        EXPECT_EQ(shifted.y, unshifted.y + 3);
    }
}

} // namespace

} // namespace qel::test
