// Fonts, from an installed face.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <vector>

namespace qel::tools {

// A source is
//
//   <font face="Inter-Medium.otf" size="10.5" digits=".tf" tracking="0.1"
//         line-height="14" ascent-gap="3" descent-gap="3" characters="characters.xml"/>
//
//   face         file name of the face, looked for below the system's font folders
//   size         pixels of an em at scale 1.0
//   digits       suffix of the glyph names of digits that are equally wide; where a face has none, all digits
//                get the advance of the widest
//   tracking     added to every advance, in pixels at scale 1.0; 0 by default
//   characters   a file with the code points, beside the source:
//                <characters><range first="32" last="126"/><list text="..."/></characters>
//
// Glyphs are rendered for the pixel size of each scale, with hints that align them to rows of pixels and
// leave their widths alone. Advances are exact, not whole pixels: rounded ones would make small text wider or
// tighter by a tenth, and differently at each scale. A text adds them up and rounds the place of each glyph.
// See GraphicsSource.h for the form.
CFontFile compileFont(CXmlSource& source, std::vector<std::filesystem::path>& files);

} // namespace qel::tools
