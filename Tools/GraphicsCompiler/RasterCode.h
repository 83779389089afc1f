// Run-length coded rasters, and what is done to a raster before it is coded.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"

namespace qel::tools {

// Below the first a pixel is taken for transparent, from the second on for opaque: nobody sees the
// difference, and long runs of either kind cost nothing to draw.
inline constexpr int kFirstVisibleAlpha = 4;
inline constexpr int kFirstOpaqueAlpha = 249;

// u16 rows, u32 offset[rows] (0 for a row with nothing visible), then the runs of each row.
std::vector<std::uint8_t> encodeRaster(const CRaster& raster);

// The reverse: transparent pixels come back as zeros, opaque ones with alpha 255. Throws CToolError when the
// code does not hold exactly `height` rows of `width` pixels.
CRaster decodeRaster(std::span<const std::uint8_t> code, int width, int height, int bytesPerPixel);

// Cuts off margins in which nothing is visible; the origin moves along, so the picture stays where it is. A
// raster with nothing visible becomes empty.
void trimMargins(CImageVariant& variant);

} // namespace qel::tools
