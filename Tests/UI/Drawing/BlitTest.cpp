// Painting into bitmaps, against the plainest code that does the same.
#include "CLinearBitmap.h"
#include "GraphicsBytes.h"
#include "TreeFixture.h"

namespace qel {
namespace {

using test::Picture;

constexpr std::int32_t kPictureWidth = 150;
constexpr std::int32_t kPictureHeight = 40;

using Pixels = std::vector<std::array<std::int32_t, 3>>; // blue, green, red

CPaletteColor randomColor(std::mt19937& random)
{
    CPaletteColor color;
    for (std::size_t i = 0; i < 256; ++i) {
        color.blue[i] = static_cast<std::uint8_t>(random());
        color.green[i] = static_cast<std::uint8_t>(random());
        color.red[i] = static_cast<std::uint8_t>(random());
    }
    return color;
}

void fillRandom(CLinearBitmap& bitmap, std::mt19937& random)
{
    ASSERT_OK(bitmap.resize(kPictureWidth, kPictureHeight));
    for (std::int32_t y = 0; y < kPictureHeight; ++y) {
        for (std::int32_t x = 0; x < kPictureWidth; ++x) {
            bitmap.getRow(y)[x] = static_cast<std::uint32_t>(random()) & 0xFFFFFFU;
        }
    }
}

std::array<std::int32_t, 3> channels(std::uint32_t pixel)
{
    return {static_cast<std::int32_t>(pixel & 0xFF), static_cast<std::int32_t>((pixel >> 8) & 0xFF),
            static_cast<std::int32_t>(pixel >> 16)}; // a fourth byte that is not 0 shows here
}

Pixels pixelsOf(const CLinearBitmap& bitmap)
{
    Pixels pixels;
    for (std::int32_t y = 0; y < kPictureHeight; ++y) {
        for (std::int32_t x = 0; x < kPictureWidth; ++x) {
            pixels.push_back(channels(bitmap.getRow(y)[x]));
        }
    }
    return pixels;
}

bool isInside(const CPixelRect& rect, std::int32_t x, std::int32_t y)
{
    return x >= rect.x && x < rect.right() && y >= rect.y && y < rect.bottom();
}

CPixelRect randomRect(std::mt19937& random)
{
    const auto below = [&](int limit) {
        return static_cast<std::int32_t>(random() % static_cast<unsigned>(limit));
    };
    return {below(kPictureWidth + 40) - 20, below(kPictureHeight + 20) - 10, below(kPictureWidth),
            below(kPictureHeight)};
}

// 0, 1, the edges of plain writing, and anything between.
double randomOpacity(std::mt19937& random)
{
    const double special[] = {0.0, 1.0, 32640.0 / 32768, 32639.0 / 32768, 0.5, 1.5};
    const auto choice = random() % 12;
    return choice < 6 ? special[choice] : static_cast<double>(random() % 100000) / 100000.0;
}

// The picture as it is stored: an alpha below 4 is nothing, from 249 on it is opaque.
void blitPlainly(Pixels& target, Picture& picture, std::uint32_t bytesPerPixel, std::int32_t x0,
                 std::int32_t y0, const CPixelRect& clip, const CPaletteColor& color, double opacity)
{
    const auto q =
        static_cast<std::int32_t>(std::floor(std::min(color.opacity * opacity * 32768.0, 32768.0) + 0.5));
    for (std::int32_t y = 0; y < kPictureHeight; ++y) {
        for (std::int32_t x = 0; x < kPictureWidth; ++x) {
            if (!isInside(clip, x, y) || !isInside({x0, y0, picture.width, picture.height}, x, y)) {
                continue;
            }
            const std::uint8_t* const pixel = picture.at(x - x0, y - y0);
            const std::int32_t alpha = pixel[3];
            const std::size_t shade = bytesPerPixel == 2 ? pixel[0] : 255;
            std::array<std::int32_t, 3> source = {color.blue[shade], color.green[shade], color.red[shade]};
            if (bytesPerPixel == 4) {
                source = {pixel[0], pixel[1], pixel[2]};
            }
            auto& place = target[static_cast<std::size_t>(y * kPictureWidth + x)];
            const bool isOpaque = alpha >= 249;
            const std::int32_t w = isOpaque ? q : alpha * q / 255;
            for (std::size_t c = 0; alpha >= 4 && c < 3; ++c) {
                place[c] = isOpaque && q >= 32640 ? source[c]
                                                  : (place[c] * 32768 + (source[c] - place[c]) * w) >> 15;
            }
        }
    }
}

TEST(Blit, EqualsThePlainOneOverRandomImagesClipsAndOpacities)
{
    std::mt19937 random(11);
    CLinearBitmap bitmap;
    for (int round = 0; round < 1500; ++round) {
        SCOPED_TRACE(round);
        fillRandom(bitmap, random);
        const std::uint32_t bytesPerPixel = 1U << (random() % 3);
        const auto side = [&] { return 1 + static_cast<std::int32_t>(random() % 180); };
        Picture picture = Picture::random(side(), side() / 3 + 1, random);
        const std::vector<std::uint8_t> raster = picture.code(bytesPerPixel);
        CImageLayer layer;
        layer.bytesPerPixel = bytesPerPixel;
        layer.rasterWidth = picture.width;
        layer.rasterHeight = picture.height;
        layer.originX = -5;
        layer.originY = 3;
        layer.raster = raster;
        CPaletteColor color = randomColor(random);
        color.opacity = random() % 2 == 0 ? 1.0 : randomOpacity(random);
        const CPixelRect at = randomRect(random);
        const CPixelRect clip = randomRect(random);
        const double opacity = randomOpacity(random);

        Pixels expected = pixelsOf(bitmap);
        blitPlainly(expected, picture, bytesPerPixel, at.x - 5, at.y + 3, clip, color, opacity);
        bitmap.blit(layer, at.x, at.y, clip, color, opacity);
        ASSERT_EQ(pixelsOf(bitmap), expected);
    }
}

TEST(Blit, FillsBlendsAndInvertsAsThePlainFormulasDo)
{
    std::mt19937 random(12);
    CLinearBitmap bitmap;
    CLinearBitmap other;
    for (int round = 0; round < 600; ++round) {
        SCOPED_TRACE(round);
        fillRandom(bitmap, random);
        fillRandom(other, random);
        const CPaletteColor color = randomColor(random);
        const CPixelRect rect = randomRect(random);
        const CPixelRect clip = randomRect(random);
        const double weight = randomOpacity(random);
        const double held = std::min(weight, 1.0);
        const int operation = round % 4;
        std::vector<std::uint8_t> coverage(static_cast<std::size_t>(kPictureWidth * kPictureHeight));
        std::generate(coverage.begin(), coverage.end(), [&] { return static_cast<std::uint8_t>(random()); });
        const CPixelRect visible = rect.intersectedWith(clip).intersectedWith(bitmap.getBounds());

        Pixels expected = pixelsOf(bitmap);
        const Pixels source = pixelsOf(other);
        for (std::int32_t y = 0; y < kPictureHeight; ++y) {
            for (std::int32_t x = 0; x < kPictureWidth; ++x) {
                const auto at = static_cast<std::size_t>(y * kPictureWidth + x);
                const std::array<std::int32_t, 3> solid = {color.blue[255], color.green[255], color.red[255]};
                for (std::size_t c = 0; isInside(visible, x, y) && c < 3; ++c) {
                    std::int32_t& value = expected[at][c];
                    const auto full = [held](double scale) {
                        return static_cast<std::int32_t>(std::floor(held * scale + 0.5));
                    };
                    if (operation == 0) {
                        value += (solid[c] - value) * full(255.0) / 255;
                    } else if (operation == 1) {
                        value ^= 255;
                    } else if (operation == 2) {
                        value += static_cast<std::int32_t>(
                            (std::int64_t{source[at][c] - value} * full(65536.0)) >> 16);
                    } else {
                        const std::int32_t w = coverage[at] * full(32768.0) / 255;
                        value = (value * 32768 + (solid[c] - value) * w) >> 15;
                    }
                }
            }
        }
        if (operation == 0) {
            bitmap.fillRect(rect, clip, color, weight);
        } else if (operation == 1) {
            bitmap.invertRect(rect, clip);
        } else if (operation == 2) {
            bitmap.blendRect(other, visible, weight);
        } else {
            bitmap.paintCoverage(coverage.data() + visible.y * kPictureWidth + visible.x, kPictureWidth,
                                 visible, color, weight);
        }
        ASSERT_EQ(pixelsOf(bitmap), expected);
    }
}

TEST(Blit, RefusesSizesThatCannotBe)
{
    CLinearBitmap bitmap;
    EXPECT_FAILS(bitmap.resize(40000, 2), "No bitmap can be 40000 x 2 pixels.");
    EXPECT_TRUE(bitmap.getBounds().isEmpty());
    CLinearBitmap small;
    ASSERT_OK(small.resize(3, 2));
    small.getRow(1)[2] = 5;
    ASSERT_OK(bitmap.copyFrom(small));
    EXPECT_EQ(bitmap.getRow(1)[2], 5u);
    EXPECT_EQ(bitmap.getHeight(), 2);
}

} // namespace
} // namespace qel
