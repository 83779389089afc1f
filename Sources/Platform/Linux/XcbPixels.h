// Rows of pixels in the form a server wants them.
#pragma once

#include "CXcbConnection.h"

#include <cstddef>
#include <cstdint>

namespace qel::platform {

std::size_t xcbRowBytes(const XcbPixelFormat& format, int width);

// A colour, 0xRRGGBB, as a pixel.
std::uint32_t xcbPixel(const XcbPixelFormat& format, std::uint32_t colour);

// `from`: blue, green, red, unused for each pixel. `to`: one row of xcbRowBytes() in a format of 16, 24 or 32
// bits a pixel. What the masks leave of a pixel of 32 bits is set: where it is an opacity, it is a full one.
void packXcbRow(const XcbPixelFormat& format, const std::uint8_t* from, int width, std::uint8_t* to);

} // namespace qel::platform
