// Packing of pixels by the masks of a visual.
#include "XcbPixels.h"

#include <bit>
#include <cstring>

namespace qel::platform {

namespace {

// A level of 8 bits, spread over the bits of a mask.
std::uint32_t spread(std::uint32_t level, std::uint32_t mask)
{
    const int shift = std::countr_zero(mask);
    const std::uint64_t greatest = mask >> shift;
    return static_cast<std::uint32_t>((level * greatest + 127) / 255) << shift;
}

} // namespace

std::size_t xcbRowBytes(const XcbPixelFormat& format, int width)
{
    const std::size_t bits = static_cast<std::size_t>(width) * format.bitsPerPixel;
    const std::size_t alignment = format.rowAlignmentBits ? format.rowAlignmentBits : 8;
    return (bits + alignment - 1) / alignment * alignment / 8;
}

std::uint32_t xcbPixel(const XcbPixelFormat& format, std::uint32_t colour)
{
    return spread((colour >> 16) & 0xFF, format.redMask) | spread((colour >> 8) & 0xFF, format.greenMask) |
           spread(colour & 0xFF, format.blueMask);
}

void packXcbRow(const XcbPixelFormat& format, const std::uint8_t* from, int width, std::uint8_t* to)
{
    if (format.isNative()) {
        std::memcpy(to, from, static_cast<std::size_t>(width) * 4);
        return;
    }
    const unsigned bytes = format.bitsPerPixel / 8;
    const std::uint32_t rest = ~(format.redMask | format.greenMask | format.blueMask);
    for (int i = 0; i < width; ++i, from += 4) {
        const std::uint32_t pixel = spread(from[2], format.redMask) | spread(from[1], format.greenMask) |
                                    spread(from[0], format.blueMask) | rest;
        for (unsigned byte = 0; byte < bytes; ++byte) {
            const unsigned place = format.isMostSignificantFirst ? bytes - 1 - byte : byte;
            *to++ = static_cast<std::uint8_t>(pixel >> (8 * place));
        }
    }
}

} // namespace qel::platform
