// Image sets, from drawings.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <vector>

namespace qel::tools {

// A source is
//
//   <image-set>
//     <include file="Shared.xml"/>
//     <define name="lamp" x="0" y="0"> SVG </define>
//     <let name="rows" value="8"/>
//     <range name="Lamp" first="30" last="30"/>
//     <image id="0..7,9" width="60" height="20" margin="0 0 2 0">
//       <let name="top" value="i == 3"/>
//       <layer slot="0" bytes="2"> SVG </layer>
//     </image>
//   </image-set>
//
// <include> brings in drawings that several sets share, a file <drawings> with <define> elements; <define> is
// a drawing to insert (CDrawing.h tells how), <let> names a number for all images.
//
// An <image> makes one image for each of its ids. Each is drawn afresh at every scale, in units of a pixel at
// scale 1.0 from the image's logical corner. Names that are always known:
//
//   id i n t      the image's id, its place among the ids of the element from 0, their number, i / (n - 1)
//   w h           the logical size, exactly as many units as the pixels it has at this scale
//   scale px      0.8, 1 or 1.25; the size of a device pixel, 1 / scale
//
//   width height  expressions, rounded to whole pixels of each scale; or
//   sizes         the pixels for each scale: "60x60 74x74 93x93"
//   margin        top right bottom left: how far the raster reaches beyond the logical size; rounded likewise
//   slot          colour slot, the layer's place among its siblings by default
//   bytes         1, 2 (default) or 4 bytes a pixel
//
// See GraphicsSource.h for the form of the function.
CImageSetFile compileImageSet(CXmlSource& source, std::vector<std::filesystem::path>& files);

} // namespace qel::tools
