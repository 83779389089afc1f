// What frames, pictures and gradients look like.
#include "ControlFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::node;

class Pictures : public test::ControlFixture
{
protected:
    // The pieces of a frame, 4 x 4, in the order of their indices.
    void addPieces()
    {
        std::vector<Tile> tiles;
        for (int i = 0; i < 9; ++i) {
            tiles.push_back({4, 4, static_cast<std::uint8_t>(10 * i)});
        }
        addImages("frame", tiles, {{"", 1, 8}});
    }
    static test::TreeNode placed(const std::string& tag, const std::string& name, Attrs attrs)
    {
        attrs.insert(attrs.end(), {{"placement", "overlay"}, {"color", "White"}});
        return node(tag, name, attrs);
    }
};

TEST_F(Pictures, AFramesPiecesStandAtItsSidesAndStretchBetweenTheCorners)
{
    addPieces();
    loadControls(
        {placed("ui:frame", "f", {{"image-set", "is.frame"}, {"width", "14"}, {"height", "11"}}),
         placed("ui:frame", "small",
                {{"image-set", "is.frame"}, {"outer-border", "L30"}, {"width", "6"}, {"height", "5"}}),
         placed("ui:frame", "filled",
                {{"has-borders", "false"}, {"outer-border", "L50"}, {"width", "6"}, {"height", "5"}})});
    EXPECT_EQ(valuesAcross(0, 0, 16), "70x4 40x6 80x4 0x2");
    EXPECT_EQ(valuesAcross(5, 0, 16), "20x4 0x6 30x4 0x2");
    EXPECT_EQ(valuesAcross(10, 0, 16), "50x4 10x6 60x4 0x2");
    EXPECT_EQ(valuesDown(0, 0, 13), "70x4 20x3 50x4 0x2");
    EXPECT_EQ(valuesAcross(0, 29, 38), "0x1 70x3 80x3 0x2") << "cut in the middle";
    EXPECT_EQ(valuesDown(30, 0, 7), "70x3 50x2 0x2");
    EXPECT_EQ(valuesAcross(4, 49, 58), "0x1 255x6 0x2");

    set("w.f", "width", "20");
    frame(0.1);
    EXPECT_EQ(valuesAcross(0, 0, 22), "70x4 40x12 80x4 0x2") << "follows its size";
    set("w.f", "is-fixed-frame", "true");
    frame(0.2);
    EXPECT_EQ(valuesAcross(0, 0, 22), "10x4 0x18");
}

TEST_F(Pictures, APictureIsAsLargeAsItsImageAndStandsWhereItIsAligned)
{
    addImages("p", {{8, 6, 100}, {4, 4, 200}});
    loadControls(
        {placed("ui:picture", "own", {{"image-set", "is.p"}, {"inner-border", "1"}}),
         placed("ui:picture", "right",
                {{"image-set", "is.p"},
                 {"image-set-index", "1"},
                 {"outer-border", "L20"},
                 {"width", "20"},
                 {"height", "11"},
                 {"inner-border", "R2"},
                 {"pic-alignment-h", "right"},
                 {"pic-alignment-v", "center"}}),
         placed("ui:picture", "cropped", {{"image-set", "is.p"}, {"outer-border", "L50"}, {"crop", "L3 T2"}}),
         placed("ui:picture", "tiled",
                {{"image-set", "is.p"},
                 {"outer-border", "L70"},
                 {"width", "21"},
                 {"height", "9"},
                 {"is-tiling-x", "true"}})});
    EXPECT_EQ(at("w.own").getArea(), (CRect{0, 0, 10, 8}));
    EXPECT_EQ(valuesAcross(3, 0, 20), "0x1 100x8 0x11");
    EXPECT_EQ(valuesAcross(6, 20, 42), "0x14 200x4 0x4");
    EXPECT_EQ(valuesDown(35, 0, 12), "0x4 200x4 0x4");
    EXPECT_EQ(at("w.cropped").getArea(), (CRect{50, 0, 5, 4}));
    EXPECT_EQ(valuesAcross(0, 69, 93), "0x1 100x21 0x2");
    EXPECT_EQ(valuesDown(70, 0, 9), "100x6 0x3");

    set("w.own", "image-set-index", "1");
    set("w.cropped", "compact-width", "30");
    frame(0.1);
    EXPECT_EQ(at("w.own").getArea(), (CRect{0, 0, 6, 6}));
    EXPECT_EQ(at("w.cropped").getArea().width, 30.0) << "the tree wins";
    EXPECT_FAILS(root_->findObject("w.own")->setAttribute("pic-alignment-h", "top", true),
                 "Invalid picture alignment 'top'.");
}

} // namespace
} // namespace qel
