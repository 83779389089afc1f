// The readers of the four kinds of graphics files.
#include "CBrushSet.h"
#include "CFont.h"
#include "CPalette.h"
#include "GraphicsBytes.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Trace.h"
#include "TreeFixture.h"

#include <memory>

namespace qel {
namespace {

using test::FileBytes;
using test::ImageBytes;
using test::LayerBytes;
using test::Picture;

CError load(CDataSet& set, std::span<const std::uint8_t> bytes)
{
    CMemoryReader reader(bytes);
    return set.load(reader);
}

std::vector<std::uint8_t> saved(const CDataSet& set)
{
    CMemoryWriteBuffer buffer;
    releaseError(set.save(buffer));
    CByteBuffer bytes;
    buffer.copyTo(bytes);
    return {bytes.bytes().begin(), bytes.bytes().end()};
}

FileBytes sampleImages()
{
    std::mt19937 random(1);
    LayerBytes shade{0, 2, Picture::random(20, 9, random), -3, -2, 0.0};
    LayerBytes logo{1, 4, Picture::random(33, 5, random), 0, 0, 0.0};
    return test::imageSetBytes({{"", 1, 8}, {"Pushed", 7, 8}},
                               {{4, {shade}}, {8, {logo}}, {7, {shade, logo}}});
}

struct Sample
{
    const char* name;
    std::unique_ptr<CDataSet> set;
    std::vector<std::uint8_t> bytes;
};

std::vector<Sample> samples()
{
    std::mt19937 random(2);
    const LayerBytes glyph{0, 1, Picture::random(7, 11, random), 1, -9, 7.25};
    std::vector<Sample> all;
    all.push_back({"image set", std::make_unique<CImageSet>(), sampleImages().bytes()});
    all.push_back(
        {"font", std::make_unique<CFont>(),
         test::fontBytes({{32, {{0, 1, Picture(0, 0), 0, 0, 3.5}}}, {65, {glyph}}}, 14, 3, 3).bytes()});
    all.push_back({"brush set", std::make_unique<CBrushSet>(), test::brushSetBytes(1.48, 4, 1.24).bytes()});
    all.push_back(
        {"palette", std::make_unique<CPalette>(),
         test::paletteBytes({{"Default", 1.0, 9, 8, 7}, {"Knob", 0.5, 1, 2, 3}}, {{"Alarm", 32}}).bytes()});
    return all;
}

TEST(GraphicsFiles, KeepTheVariantNearestToTheInterfaceScale)
{
    struct Case
    {
        double interfaceScale;
        double kept;
        std::int32_t width;
    };
    for (const Case& row : {Case{0.8, 0.8, 19}, Case{1.0, 1.0, 20}, Case{1.25, 1.25, 21}, Case{1.1, 1.0, 20},
                            Case{0.9, 0.8, 19}, Case{9.0, 1.25, 21}}) {
        CImageSet set(row.interfaceScale);
        ASSERT_OK(load(set, sampleImages().bytes()));
        const CImage* const image = set.getImage(4);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->layers[0].scale, row.kept) << row.interfaceScale;
        EXPECT_EQ(image->getWidth(), row.width) << row.interfaceScale;
        EXPECT_EQ(image->layers[0].originX, -3);
    }
}

TEST(GraphicsFiles, FindImagesByIdAndRangesByName)
{
    CImageSet set;
    ASSERT_OK(load(set, sampleImages().bytes()));
    ASSERT_TRUE(set.getImage(7));
    EXPECT_EQ(set.getImage(7)->layers.size(), 2u);
    EXPECT_EQ(set.getImage(7)->layers[1].bytesPerPixel, 4u);
    EXPECT_EQ(set.getImage(5), nullptr) << "a hole in the default range";
    EXPECT_EQ(set.findRange("Pushed").first, 7u);

    std::vector<CString> lines;
    const CTraceHook before = setTraceHook([&](const CString& line) { lines.push_back(line); });
    EXPECT_EQ(set.findRange("Active").last, 8u) << "the default range";
    setTraceHook(before);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "Range not found <Active>");

    CImageSet withoutRanges;
    ASSERT_OK(load(withoutRanges, test::imageSetBytes({}, {{12, {}}, {10, {}}}).bytes()));
    EXPECT_EQ(withoutRanges.findRange({}).first, 10u);
    EXPECT_EQ(withoutRanges.findRange({}).last, 12u);
}

TEST(GraphicsFiles, ComeBackFromWhatTheySave)
{
    for (Sample& sample : samples()) {
        SCOPED_TRACE(sample.name);
        ASSERT_OK(load(*sample.set, sample.bytes));
        const std::vector<std::uint8_t> once = saved(*sample.set);
        ASSERT_OK(load(*sample.set, once));
        EXPECT_EQ(saved(*sample.set), once);
        EXPECT_GT(once.size(), 200u);
    }
}

TEST(GraphicsFiles, RefuseRunsThatDoNotMakeTheRow)
{
    // One row of three pixels, two bytes each; the row starts at byte 6.
    const auto isSound = [](std::vector<std::uint8_t> runs, std::uint8_t offset = 6, std::uint8_t rows = 1) {
        std::vector<std::uint8_t> raster = {rows, 0, offset, 0, 0, 0};
        raster.insert(raster.end(), runs.begin(), runs.end());
        return CImage::isRasterSound(raster, 3, 1, 2);
    };
    constexpr std::uint8_t kThree = 3 << 3;
    EXPECT_TRUE(isSound({kThree | 2, 1, 2, 3}));
    EXPECT_TRUE(isSound({kThree | 1, 1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(isSound({kThree | 4, 0})) << "two bytes of code for a short run";
    EXPECT_TRUE(isSound({}, 0)) << "nothing is read of a row without an offset";
    EXPECT_FALSE(isSound({kThree | 2, 1, 2})) << "a pixel is missing";
    EXPECT_FALSE(isSound({(2 << 3) | 2, 1, 2})) << "the runs end before the row";
    EXPECT_FALSE(isSound({(4 << 3) | 2, 1, 2, 3, 4})) << "the runs end behind the row";
    EXPECT_FALSE(isSound({kThree | 3, 1, 2, 3, 4, 5, 6})) << "no such kind";
    EXPECT_FALSE(isSound({0, kThree})) << "an empty run";
    EXPECT_FALSE(isSound({kThree | 4})) << "half a code";
    EXPECT_FALSE(isSound({kThree | 2, 1, 2, 3}, 5)) << "the row starts in the table";
    EXPECT_FALSE(isSound({kThree}, 8)) << "the row starts behind the end";
    EXPECT_FALSE(isSound({kThree}, 6, 2)) << "the row count is not the height";
}

TEST(GraphicsFiles, CodeLongRunsAndTheEdgesOfAlpha)
{
    constexpr std::int32_t kWidth = 8191 + 40;
    Picture picture(kWidth, 1);
    EXPECT_EQ(picture.code(2), (std::vector<std::uint8_t>{1, 0, 0, 0, 0, 0, 0xFC, 0xFF, 0x44, 0x01}))
        << "an invisible row has runs, but no offset";
    const std::uint8_t alphas[] = {3, 4, 248, 249};
    for (std::int32_t x = 0; x < 4; ++x) {
        picture.at(x, 0)[0] = 50;
        picture.at(x, 0)[3] = alphas[x];
    }
    // One transparent, two with alpha, one opaque, the longest run, and what is left.
    constexpr unsigned kLeft = (kWidth - 4 - 8191) << 3 | 4;
    const std::vector<std::uint8_t> expected = {
        1, 0,  6,   0,          0,  0,    1 << 3, 2 << 3 | 1,   50,
        4, 50, 248, 1 << 3 | 2, 50, 0xFC, 0xFF,   kLeft & 0xFF, kLeft >> 8};
    const std::vector<std::uint8_t> code = picture.code(2);
    EXPECT_EQ(code, expected);
    EXPECT_TRUE(CImage::isRasterSound(code, kWidth, 1, 2));
}

TEST(GraphicsFiles, NameColorsFramesAndWhatToUseInstead)
{
    CPalette palette;
    ASSERT_OK(load(palette, test::paletteBytes({{"Default", 0.75, 1, 2, 3},
                                                {"Alarm|0", 1.0, 10, 0, 0},
                                                {"Alarm|1", 1.0, 11, 0, 0},
                                                {"Alarm|2", 1.0, 12, 0, 0},
                                                {"Knob", 1.0, 20, 0, 0}},
                                               {{"Alarm", 3}})
                                .bytes()));
    EXPECT_EQ(palette.findColor("Knob")->red[255], 20);
    EXPECT_EQ(palette.findColor("Nothing")->opacity, 0.75);
    EXPECT_EQ(palette.getFrames("Alarm"), 3u);
    EXPECT_EQ(palette.getFrames("Knob"), 0u);
    EXPECT_EQ(palette.findColor("Knob", 1.0)->red[255], 20);
    EXPECT_EQ(palette.findColor("Alarm", 0.0)->red[255], 10);
    EXPECT_EQ(palette.findColor("Alarm", 0.25)->red[255], 11) << "halves round up";
    EXPECT_EQ(palette.findColor("Alarm", 1.0)->red[255], 12);
    EXPECT_EQ(palette.findColor("Nothing", 0.5)->red[255], 1);
}

} // namespace
} // namespace qel
