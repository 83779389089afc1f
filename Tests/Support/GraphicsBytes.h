// Encodes graphics files for tests, in the forms the readers take, from pictures that a test also keeps
// uncoded.
#pragma once

#include "CImage.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qel::test {

// Little-endian numbers and strings, one after the other.
class FileBytes
{
public:
    FileBytes& u32(std::uint32_t value) { return number(value, 4); }
    FileBytes& i32(std::int32_t value) { return u32(static_cast<std::uint32_t>(value)); }
    FileBytes& f64(double value) { return number(std::bit_cast<std::uint64_t>(value), 8); }
    FileBytes& text(const std::string& value)
    {
        u32(static_cast<std::uint32_t>(value.size()));
        bytes_.insert(bytes_.end(), value.begin(), value.end());
        return *this;
    }
    FileBytes& raw(const std::vector<std::uint8_t>& bytes)
    {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    // A byte count, then the bytes.
    FileBytes& blob(const std::vector<std::uint8_t>& bytes)
    {
        return u32(static_cast<std::uint32_t>(bytes.size())).raw(bytes);
    }

    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

private:
    FileBytes& number(std::uint64_t bits, int size)
    {
        for (int i = 0; i < size; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(bits >> (8 * i)));
        }
        return *this;
    }

    std::vector<std::uint8_t> bytes_;
};

// Pixels of four bytes: blue or value, green, red, alpha.
struct Picture
{
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> pixels;

    Picture(std::int32_t pictureWidth, std::int32_t pictureHeight)
        : width(pictureWidth), height(pictureHeight),
          pixels(4 * static_cast<std::size_t>(pictureWidth) * static_cast<std::size_t>(pictureHeight))
    {}

    std::uint8_t* at(std::int32_t x, std::int32_t y)
    {
        return pixels.data() + 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                    static_cast<std::size_t>(x));
    }
    std::vector<std::uint8_t> code(std::uint32_t bytesPerPixel) const
    {
        return CImage::buildRaster(pixels.data(), width, height, 4 * width, bytesPerPixel);
    }

    // Stretches of transparent, half transparent and opaque pixels; some rows are empty.
    static Picture random(std::int32_t width, std::int32_t height, std::mt19937& engine)
    {
        Picture picture(width, height);
        for (std::int32_t y = 0; y < height; ++y) {
            const bool isRowEmpty = engine() % 8 == 0;
            for (std::int32_t x = 0; x < width;) {
                const auto kind = isRowEmpty ? 0 : engine() % 3;
                std::int32_t end = std::min(width, x + 1 + static_cast<std::int32_t>(engine() % 40));
                for (; x < end; ++x) {
                    for (int channel = 0; channel < 3; ++channel) {
                        picture.at(x, y)[channel] = static_cast<std::uint8_t>(engine());
                    }
                    picture.at(x, y)[3] = static_cast<std::uint8_t>(kind == 0   ? 0
                                                                    : kind == 1 ? 4 + engine() % 245
                                                                                : 255);
                }
            }
        }
        return picture;
    }
};

// A layer with three variants, for 0.8, 1.0 and 1.25; the picture is that of 1.0, the others are one pixel
// smaller and larger and opaque.
struct LayerBytes
{
    std::uint32_t slot = 0;
    std::uint32_t bytesPerPixel = 2;
    Picture picture{0, 0};
    std::int32_t originX = 0;
    std::int32_t originY = 0;
    double advance = 0.0;

    void write(FileBytes& out) const
    {
        out.u32(slot).u32(bytesPerPixel).u32(3).f64(0.8).f64(1.0).f64(1.25);
        for (int variant = -1; variant <= 1; ++variant) {
            Picture stored = picture;
            if (variant != 0) {
                stored = Picture(std::max(0, picture.width + variant), std::max(0, picture.height + variant));
                std::fill(stored.pixels.begin(), stored.pixels.end(), std::uint8_t{255});
            }
            out.i32(stored.width).i32(stored.height).f64(advance).i32(originX).i32(originY);
            out.i32(stored.width).i32(stored.height).blob(stored.code(bytesPerPixel));
        }
    }
};

struct ImageBytes
{
    std::uint32_t id = 0;
    std::vector<LayerBytes> layers;
};

struct RangeBytes
{
    std::string name;
    std::uint32_t first;
    std::uint32_t last;
};

inline FileBytes imageSetBytes(const std::vector<RangeBytes>& ranges, const std::vector<ImageBytes>& images)
{
    FileBytes out;
    out.u32(1).u32(static_cast<std::uint32_t>(ranges.size()));
    for (const RangeBytes& range : ranges) {
        out.text(range.name).u32(range.first).u32(range.last);
    }
    out.u32(static_cast<std::uint32_t>(images.size()));
    for (const ImageBytes& image : images) {
        out.u32(image.id).u32(static_cast<std::uint32_t>(image.layers.size()));
        for (const LayerBytes& layer : image.layers) {
            layer.write(out);
        }
    }
    return out;
}

inline FileBytes fontBytes(const std::vector<ImageBytes>& glyphs, std::uint32_t lineHeight,
                           std::uint32_t ascentGap, std::uint32_t descentGap)
{
    FileBytes out;
    out.u32(1).raw(imageSetBytes({}, glyphs).bytes());
    return out.u32(lineHeight).u32(ascentGap).u32(descentGap);
}

// One brush for scale 1: a disc whose outermost pixel is soft.
inline FileBytes brushSetBytes(double width, std::uint32_t size, double radius)
{
    constexpr std::uint32_t kOversampling = 4;
    constexpr std::uint32_t kPositions = 1U << kOversampling;
    std::vector<std::uint8_t> table;
    for (std::uint32_t place = 0; place < kPositions * kPositions; ++place) {
        const double centerX = radius + double(place % kPositions) / kPositions;
        const double centerY = radius + double(place / kPositions) / kPositions;
        for (std::uint32_t pixel = 0; pixel < size * size; ++pixel) {
            const double distance =
                std::hypot(pixel % size + 0.5 - centerX, double(pixel / size) + 0.5 - centerY);
            table.push_back(static_cast<std::uint8_t>(255.0 * std::clamp(radius - distance, 0.0, 1.0)));
        }
    }
    FileBytes out;
    out.u32(1).u32(1).f64(width).u32(kOversampling).u32(1).f64(1.0);
    return out.u32(size).f64(radius).blob(table);
}

struct ColorBytes
{
    std::string name;
    double opacity = 1.0;
    std::uint8_t red = 0; // of entry 255; the shades below lead there from black
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

inline FileBytes paletteBytes(const std::vector<ColorBytes>& colors,
                              const std::vector<std::pair<std::string, std::uint32_t>>& frames)
{
    FileBytes out;
    out.u32(1).i32(static_cast<std::int32_t>(colors.size()));
    for (const ColorBytes& color : colors) {
        out.text(color.name).f64(color.opacity);
        for (const unsigned channel : {color.red, color.green, color.blue}) {
            std::vector<std::uint8_t> shades;
            for (unsigned i = 0; i < 256; ++i) {
                shades.push_back(static_cast<std::uint8_t>(channel * i / 255));
            }
            out.raw(shades);
        }
    }
    out.u32(static_cast<std::uint32_t>(frames.size()));
    for (const auto& [name, count] : frames) {
        out.text(name).u32(count);
    }
    return out;
}

} // namespace qel::test
