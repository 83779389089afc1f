// SVG to pixels.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"

#include <string>

namespace qel::tools {

// Renders a complete SVG document into a raster of this size; the root's viewBox says what part of the
// drawing that is. One byte a pixel keeps the alpha, two keep luminance and alpha, four the colours. Throws
// CToolError with the library's message when the document is none.
CRaster renderSvg(const std::string& svg, int width, int height, int bytesPerPixel);

} // namespace qel::tools
