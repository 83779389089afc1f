// Glyphs of one face as rasters.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"

#include <filesystem>
#include <memory>
#include <string>

namespace qel::tools {

// Draws one character after the other at one pixel size. Throws CToolError when the face cannot be read.
class CGlyphRenderer
{
public:
    // `digitSuffix` is what the glyph names of equally wide digits end in; empty: the usual digits.
    CGlyphRenderer(const std::filesystem::path& face, std::string digitSuffix);
    ~CGlyphRenderer();

    bool has(char32_t character) const;
    // Height of an em; comes before the first render.
    void setPixelSize(double pixels);
    // One byte per pixel; origin from the pen on the baseline. Digits all have the same advance and stand in
    // its middle.
    CImageVariant render(char32_t character);

private:
    struct Face;

    unsigned glyphOf(char32_t character) const;
    void load(char32_t character);
    // Of the glyph loaded last.
    double unroundedAdvance() const;

    std::unique_ptr<Face> face_;
    std::string digitSuffix_;
    double digitAdvance_ = 0.0;
};

} // namespace qel::tools
