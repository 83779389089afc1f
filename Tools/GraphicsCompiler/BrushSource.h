// Brush sets, computed from line widths.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <vector>

namespace qel::tools {

// A source is
//
//   <brush-set oversampling="4"><brush width="1.48"/>...</brush-set>
//
// with widths in pixels at scale 1.0. A stamp is a disc of the line's width, and a byte is the share of its
// pixel that the disc covers: a line of stamps is as wide as its name says, with soft edges. `radius` is half
// of the width and half a pixel for the soft edge. The disc's centre lies `radius` plus the fractional
// position right of and below the stamp's corner: a pen at (x, y), in pixels with whole numbers at pixel
// edges, has x - radius = column + fx / 2^oversampling, and its stamp begins in that column; likewise its
// row. See GraphicsSource.h for the form.
CBrushSetFile compileBrushSet(CXmlSource& source, std::vector<std::filesystem::path>& files);

} // namespace qel::tools
