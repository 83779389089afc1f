#include "GraphicsCompiler/RasterCode.h"

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

} // namespace qel::tools
