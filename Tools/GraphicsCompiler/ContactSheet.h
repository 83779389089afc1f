// Contact sheets: everything a graphics file holds, on one picture.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"

#include <string>
#include <vector>

namespace qel::tools {

struct CSheetOptions
{
    // Paints the images; must outlive the drawing.
    const CPaletteFile* palette = nullptr;
    // Palette colours of the slots from 0 on; the last one serves all further slots.
    std::vector<std::string> colours;
    // Colour state, such as "ActiveHover"; empty for the plain one.
    std::string state;
    // The nearest variant is taken.
    double scale = 1.0;
    // Whole pixels a pixel.
    int zoom = 1;
};

// The colours that the interface gives to a set of this file name ("knob.is"), as far as they are settled.
std::vector<std::string> usualColours(const std::string& fileName);

// Images by range and id, glyphs with sample words, stamps, or swatches. Throws CToolError when the picture
// cannot be written or a colour is unknown.
void drawContactSheet(const CGraphicsFile& file, const CSheetOptions& options, const std::string& path);

} // namespace qel::tools
