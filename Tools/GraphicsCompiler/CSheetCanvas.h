// The paper of a contact sheet.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"

#include <cstdint>
#include <memory>
#include <string>

typedef struct _cairo_surface cairo_surface_t;

namespace qel::tools {

// A picture to draw compiled graphics on as the interface would: the same blends, pixel by pixel. Coordinates
// are pixels from the top left; what lies outside is cut off.
class CSheetCanvas
{
public:
    struct Rgb
    {
        std::uint8_t red = 0;
        std::uint8_t green = 0;
        std::uint8_t blue = 0;
    };

    // Throws CToolError when there is no memory for it.
    CSheetCanvas(int width, int height, Rgb ground);
    ~CSheetCanvas();

    int width() const { return width_; }

    void fill(int x, int y, int width, int height, Rgb colour, double opacity = 1.0);
    // A raster whose logical corner (of glyphs: pen on the baseline) lies at (x, y), each pixel `zoom` wide.
    void draw(const CImageVariant& variant, const CPaletteColour& colour, int x, int y, int zoom);
    // Plain writing of the sheet itself, its baseline at y.
    void label(int x, int y, const std::string& utf8, Rgb colour);
    // Throws CToolError when the file cannot be written.
    void save(const std::string& path) const;

private:
    void blend(int x, int y, Rgb colour, double weight);

    int width_;
    int height_;
    cairo_surface_t* surface_;
};

} // namespace qel::tools
