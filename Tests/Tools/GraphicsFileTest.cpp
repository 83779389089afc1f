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

} // namespace qel::tools
