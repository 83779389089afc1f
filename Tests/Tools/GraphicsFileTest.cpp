#include "GraphicsCompiler/GraphicsFile.h"
#include "GraphicsCompiler/RasterCode.h"
#include "TreeCompiler/ToolError.h"

#include <gtest/gtest.h>

#include <random>

namespace qel::tools {

namespace {

constexpr std::uint8_t kAlphas[] = {0, 3, 4, 248, 249, 255};

// Rows of runs whose lengths lie around the ends of both code forms.
CRaster randomRaster(std::mt19937& generator, int bytesPerPixel)
{
    constexpr int kLengths[] = {1, 31, 32, 33, 8191, 8192, 300};
    CRaster raster(static_cast<int>(generator() % 3 == 0 ? 16400 : 100 + generator() % 100), 5,
                   bytesPerPixel);
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width;) {
            const std::uint8_t alpha = kAlphas[generator() % std::size(kAlphas)];
            const int end = std::min<int>(raster.width, x + kLengths[generator() % std::size(kLengths)]);
            for (; x < end; ++x) {
                for (int i = 0; i < bytesPerPixel; ++i) {
                    raster.at(x, y)[i] = static_cast<std::uint8_t>(generator());
                }
                raster.at(x, y)[bytesPerPixel - 1] = alpha;
            }
        }
    }
    return raster;
}

// What the code keeps of a raster.
CRaster simplified(CRaster raster)
{
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width; ++x) {
            std::uint8_t* const pixel = raster.at(x, y);
            std::uint8_t& alpha = pixel[raster.bytesPerPixel - 1];
            if (alpha < 4) {
                std::fill_n(pixel, raster.bytesPerPixel, std::uint8_t{0});
            } else if (alpha >= 249) {
                alpha = 255;
            }
        }
    }
    return raster;
}

CRaster uniform(int width, std::uint8_t alpha)
{
    CRaster raster(width, 1, 1);
    std::ranges::fill(raster.pixels, alpha);
    return raster;
}

CImageSetFile smallSet()
{
    std::mt19937 generator(5);
    CImageSetFile file;
    file.ranges = {{"", 1, 2}, {"Active", 2, 2}};
    for (const std::uint32_t id : {1u, 2u}) {
        CImage& image = file.images.emplace_back(CImage{id, {{0, 2, {}}, {2, 4, {}}}});
        for (CImageLayer& layer : image.layers) {
            for (const double scale : kGraphicsScales) {
                CImageVariant& variant =
                    layer.variants.emplace_back(CImageVariant{scale, 3, 2, 0.5, -1, 1, {}});
                variant.raster = CRaster(3, 2, static_cast<int>(layer.bytesPerPixel));
                for (std::uint8_t& byte : variant.raster.pixels) {
                    byte = static_cast<std::uint8_t>(generator());
                }
                variant.raster = simplified(variant.raster);
            }
        }
    }
    return file;
}

} // namespace

TEST(RasterCode, BringsBackEveryPixelThatCanBeSeen)
{
    std::mt19937 generator(1);
    for (int round = 0; round < 60; ++round) {
        const int bytesPerPixel = 1 << round % 3;
        const CRaster raster = randomRaster(generator, bytesPerPixel);
        const auto code = encodeRaster(raster);
        ASSERT_EQ(decodeRaster(code, raster.width, raster.height, bytesPerPixel), simplified(raster))
            << "round " << round;
    }
}

TEST(RasterCode, WritesRunsInTheShortestForm)
{
    using Bytes = std::vector<std::uint8_t>;
    const auto runs = [](const CRaster& raster) {
        const Bytes code = encodeRaster(raster);
        return Bytes(code.begin() + 6, code.end());
    };
    EXPECT_EQ(runs(uniform(31, 255)), (Bytes{31 << 3 | 2}));
    EXPECT_EQ(runs(uniform(32, 255)), (Bytes{6, 1}));
    EXPECT_EQ(runs(uniform(8191, 255)), (Bytes{0xFE, 0xFF}));
    EXPECT_EQ(runs(uniform(8192, 255)), (Bytes{0xFE, 0xFF, 1 << 3 | 2}));
    EXPECT_EQ(runs(uniform(2, 100)), (Bytes{2 << 3 | 1, 100, 100}));
    // An empty row has its runs, but no entry in the table.
    EXPECT_EQ(encodeRaster(uniform(40, 3)), (Bytes{1, 0, 0, 0, 0, 0, 40 * 8 % 256 | 4, 1}));
}

TEST(RasterCode, TrimsMarginsAndLeavesThePictureInItsPlace)
{
    CImageVariant variant;
    variant.originX = -2;
    variant.originY = 1;
    variant.raster = CRaster(6, 5, 1);
    *variant.raster.at(0, 0) = 3; // not to be seen
    *variant.raster.at(2, 1) = 4;
    *variant.raster.at(4, 3) = 200;
    trimMargins(variant);
    EXPECT_EQ(variant.originX, 0);
    EXPECT_EQ(variant.originY, 2);
    EXPECT_EQ(variant.raster.width, 3);
    EXPECT_EQ(variant.raster.height, 3);
    EXPECT_EQ(*variant.raster.at(0, 0), 4);
    EXPECT_EQ(*variant.raster.at(2, 2), 200);
}

TEST(GraphicsFile, KeepsAllThatItHolds)
{
    CPaletteFile palette;
    palette.colours.resize(2);
    palette.colours[0].name = "Alarm|0";
    palette.colours[1].opacity = 0.25;
    palette.colours[1].green[200] = 7;
    palette.frameTables = {{"Alarm", 32}};
    const CBrushSetFile brushes{{{1.48, 1, {{0.8, 2, 1.1, std::vector<std::uint8_t>(16, 9)}}}}};
    const std::pair<std::string, CGraphicsFile> files[] = {{"a.is", smallSet()},
                                                           {"a.fnt", CFontFile{smallSet(), 14, 3, 2}},
                                                           {"a.bs", brushes},
                                                           {"a.pal", palette}};
    for (const auto& [name, file] : files) {
        EXPECT_EQ(decodeGraphics(encodeGraphics(file), name), file) << name;
    }
}

TEST(GraphicsFile, RefusesDamageWithAMessageAndNeverReadsBeyondTheEnd)
{
    const auto good = encodeGraphics(CFontFile{smallSet(), 14, 3, 2});
    for (std::size_t length = 0; length < good.size(); ++length) {
        // Its own allocation, so that AddressSanitizer sees a read behind the end.
        const std::vector<std::uint8_t> part(good.begin(),
                                             good.begin() + static_cast<std::ptrdiff_t>(length));
        try {
            decodeGraphics(part, "a.fnt");
            FAIL() << "taken although cut to " << length;
        } catch (const CToolError& error) {
            EXPECT_NE(std::string(error.what()).find("a.fnt: "), std::string::npos) << error.what();
        }
    }
    std::mt19937 generator(2);
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        auto damaged = good;
        damaged[generator() % damaged.size()] = static_cast<std::uint8_t>(generator());
        try {
            decodeGraphics(damaged, "a.fnt");
        } catch (const CToolError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 1000);
}

} // namespace qel::tools
