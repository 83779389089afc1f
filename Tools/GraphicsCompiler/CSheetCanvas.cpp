// The paper of a contact sheet.
#include "GraphicsCompiler/CSheetCanvas.h"

#include "TreeCompiler/ToolError.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qel::tools {

namespace {

constexpr double kLabelSizePx = 10.0;

std::uint32_t word(const CSheetCanvas::Rgb& colour)
{
    return 0xFF000000u | static_cast<std::uint32_t>(colour.red << 16 | colour.green << 8 | colour.blue);
}

std::uint8_t mixedByte(unsigned from, unsigned to, double weight)
{
    return static_cast<std::uint8_t>(std::lround(from + (static_cast<double>(to) - from) * weight));
}

} // namespace

CSheetCanvas::CSheetCanvas(int width, int height, Rgb ground)
    : width_(width), height_(height), surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height))
{
    if (cairo_surface_status(surface_) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface_);
        throw CToolError("no memory for a picture of " + std::to_string(width) + " x " +
                         std::to_string(height));
    }
    fill(0, 0, width, height, ground);
}

CSheetCanvas::~CSheetCanvas()
{
    cairo_surface_destroy(surface_);
}

void CSheetCanvas::blend(int x, int y, Rgb colour, double weight)
{
    if (x < 0 || y < 0 || x >= width_ || y >= height_) {
        return;
    }
    unsigned char* row =
        cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + 4 * x, sizeof pixel);
    pixel = word({mixedByte(pixel >> 16 & 255, colour.red, weight),
                  mixedByte(pixel >> 8 & 255, colour.green, weight),
                  mixedByte(pixel & 255, colour.blue, weight)});
    std::memcpy(row + 4 * x, &pixel, sizeof pixel);
}

void CSheetCanvas::fill(int x, int y, int width, int height, Rgb colour, double opacity)
{
    cairo_surface_flush(surface_);
    for (int row = std::max(y, 0); row < std::min(y + height, height_); ++row) {
        for (int column = std::max(x, 0); column < std::min(x + width, width_); ++column) {
            blend(column, row, colour, opacity);
        }
    }
    cairo_surface_mark_dirty(surface_);
}

void CSheetCanvas::draw(const CImageVariant& variant, const CPaletteColour& colour, int x, int y, int zoom)
{
    const CRaster& raster = variant.raster;
    for (int row = 0; row < raster.height; ++row) {
        for (int column = 0; column < raster.width; ++column) {
            const std::uint8_t* pixel = raster.at(column, row);
            const std::uint8_t value = raster.bytesPerPixel == 2 ? pixel[0] : 255;
            Rgb shade{colour.red[value], colour.green[value], colour.blue[value]};
            if (raster.bytesPerPixel == 4) {
                shade = {pixel[2], pixel[1], pixel[0]};
            }
            const double weight = raster.alphaAt(column, row) / 255.0 * colour.opacity;
            if (weight > 0.0) {
                fill(x + (variant.originX + column) * zoom, y + (variant.originY + row) * zoom, zoom, zoom,
                     shade, weight);
            }
        }
    }
}

void CSheetCanvas::label(int x, int y, const std::string& utf8, Rgb colour)
{
    cairo_t* context = cairo_create(surface_);
    cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, kLabelSizePx);
    cairo_set_source_rgb(context, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
    cairo_move_to(context, x, y);
    cairo_show_text(context, utf8.c_str());
    cairo_destroy(context);
}

void CSheetCanvas::save(const std::string& path) const
{
    const cairo_status_t status = cairo_surface_write_to_png(surface_, path.c_str());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw CToolError("cannot write '" + path + "': " + cairo_status_to_string(status));
    }
}

} // namespace qel::tools
