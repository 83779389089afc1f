// The texts of placement attributes.
#include "LayoutSyntax.h"
#include "Trace.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

std::string sides(const char* text, double scale = 1.0, bool isRounded = true)
{
    const CViewBorder border = parseBorder(text, scale, isRounded, {});
    std::string joined;
    for (const double side : {border.left, border.top, border.right, border.bottom}) {
        char number[32];
        std::snprintf(number, sizeof number, "%g ", side);
        joined += number;
    }
    return joined;
}

TEST(LayoutSyntax, BordersReplaceAndAddSideBySide)
{
    EXPECT_EQ(sides(""), "0 0 0 0 ");
    EXPECT_EQ(sides("3"), "3 3 3 3 ");
    EXPECT_EQ(sides("B3"), "0 0 0 3 ");
    EXPECT_EQ(sides("*LT1 *RB-1"), "1 1 -1 -1 ");
    EXPECT_EQ(sides("4  *LT1 *RB-1 "), "5 5 3 3 ");
    EXPECT_EQ(sides("4 l*2 *3 tR+1"), "9 1 1 7 ");
    EXPECT_EQ(sides("2.5 L-2.5 T.4"), "-3 0 3 3 ");
    EXPECT_EQ(sides("3", 1.25), "4 4 4 4 ");
    EXPECT_EQ(sides("2 L-2", 1.25), "-3 3 3 3 ");
    EXPECT_EQ(sides("1 *L1", 1.25), "2 1 1 1 "); // each token is rounded
    EXPECT_EQ(sides("1 *L1.5", 1.25, false), "3.125 1.25 1.25 1.25 ");
}

TEST(LayoutSyntax, SizesTakeNamesNumbersAndPercentages)
{
    using Form = CViewSize::Form;
    const auto is = [](const CViewSize& size, Form form, double value) {
        return size.form == form && std::abs(size.value - value) < 1e-12;
    };
    EXPECT_TRUE(is(parseViewSize("12.5", 0.8), Form::kNumber, 10.0));
    EXPECT_TRUE(is(parseViewSize("12.5%", 0.8), Form::kShare, 0.125));
    EXPECT_TRUE(is(parseViewSize("120%", 1.0), Form::kShare, 1.0));
    EXPECT_TRUE(is(parseViewSize("-1%", 1.0), Form::kShare, 0.0));
    EXPECT_TRUE(is(parseViewSize("full", 1.0), Form::kShare, 1.0));
    EXPECT_TRUE(is(parseViewSize("balanced", 1.0), Form::kBalanced, 0.0));
    EXPECT_TRUE(is(parseViewSize("compact", 1.0), Form::kCompact, 0.0));
    for (const char* bad : {"", "px", "1e3", "12 ", "1.2.3", "Compact"}) {
        EXPECT_TRUE(is(parseViewSize(bad, 1.0), Form::kNumber, 0.0)) << bad;
    }
    EXPECT_TRUE(is(parseViewSize("%", 1.0), Form::kShare, 0.0));
    EXPECT_TRUE(is(parseMinSize("full", 1.0), Form::kNumber, 0.0));
}

} // namespace
} // namespace qel
