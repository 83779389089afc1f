// An image: layers of run-length coded pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qel {

// One layer, in the variant for one interface scale. All lengths are pixels of that variant.
//
// The raster is a u16 row count, a u32 offset from the raster's start for each row, and the rows' runs, all
// little endian. An offset of 0 is a row without a visible pixel. A row's runs together cover exactly
// `rasterWidth` pixels. A run begins with its code: one byte, or two when bit 2 is set. Bits 0 and 1 are the
// kind, the bits from 3 up the number of pixels.
//
//     kind          bytes for a pixel        of 1, 2, 4 bytes
//     transparent   none
//     with alpha    all                      alpha; value, alpha; blue, green, red, alpha
//     opaque        all but the alpha        none;  value;        blue, green, red
struct CImageLayer
{
    enum RunKind : unsigned
    {
        kTransparentRun = 0,
        kAlphaRun = 1,
        kOpaqueRun = 2
    };
    static constexpr unsigned kRunKindMask = 3;
    static constexpr unsigned kLongRunFlag = 4;
    static constexpr unsigned kRunCountShift = 3;
    static constexpr std::int32_t kMaxShortRun = 31;
    static constexpr std::int32_t kMaxRun = 8191;

    std::uint32_t colorSlot = 0;     // the slot of the view's colours that paints this layer
    std::uint32_t bytesPerPixel = 2; // 1, 2 or 4
    double scale = 1.0;              // the interface scale that this variant was made for
    std::int32_t width = 0;          // logical size
    std::int32_t height = 0;
    double advance = 0.0;     // step of the pen behind a glyph
    std::int32_t originX = 0; // from the logical corner (of a glyph: the pen) to the raster's
    std::int32_t originY = 0;
    std::int32_t rasterWidth = 0;
    std::int32_t rasterHeight = 0;
    // The raster, checked; owned by the set. Empty if nothing is visible.
    std::span<const std::uint8_t> raster;

    // The runs of row `y`, which must be within the raster, or null if nothing in it is visible.
    const std::uint8_t* findRow(std::int32_t y) const
    {
        const std::uint8_t* const entry = raster.data() + 2 + 4 * static_cast<std::size_t>(y);
        const std::uint32_t offset = entry[0] | (std::uint32_t{entry[1]} << 8) |
                                     (std::uint32_t{entry[2]} << 16) | (std::uint32_t{entry[3]} << 24);
        return offset == 0 ? nullptr : raster.data() + offset;
    }
};

// One image of a set.
struct CImage
{
    std::uint32_t id = 0;
    std::span<const CImageLayer> layers; // painted in this order; owned by the set

    // The logical size, which all layers of an image share.
    std::int32_t getWidth() const { return layers.empty() ? 0 : layers[0].width; }
    std::int32_t getHeight() const { return layers.empty() ? 0 : layers[0].height; }

    static constexpr std::uint8_t kFirstVisibleAlpha = 4;
    static constexpr std::uint8_t kFirstOpaqueAlpha = 249;

    // Codes pixels of four bytes (blue or value, green, red, alpha), rows of `pitchBytes`, as a raster of 1,
    // 2 or 4 bytes a pixel. An alpha below kFirstVisibleAlpha counts as transparent, one from
    // kFirstOpaqueAlpha on as opaque; neighbours of one kind make one run, and after kMaxRun pixels a new one
    // starts. Width and height are at least 0, the height at most 65535.
    static std::vector<std::uint8_t> buildRaster(const std::uint8_t* pixels, std::int32_t width,
                                                 std::int32_t height, std::ptrdiff_t pitchBytes,
                                                 std::uint32_t bytesPerPixel);

    // True if the raster holds what CImageLayer promises for these sizes: then blits may trust it.
    static bool isRasterSound(std::span<const std::uint8_t> raster, std::int32_t rasterWidth,
                              std::int32_t rasterHeight, std::uint32_t bytesPerPixel);
};

} // namespace qel
