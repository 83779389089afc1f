// A drawing surface for plots and outlines.
#include "Canvas/CCanvas.h"

#include <cmath>

namespace qel::tools {

CCanvas::CCanvas(int width, int height, CColour background)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), &cairo_surface_destroy),
      cairo_(cairo_create(surface_.get()), &cairo_destroy)
{
    setColour(background);
    cairo_paint(cairo_.get());
    cairo_set_line_join(cairo_.get(), CAIRO_LINE_JOIN_ROUND);
}

void CCanvas::setColour(CColour colour)
{
    cairo_set_source_rgba(cairo_.get(), colour.red, colour.green, colour.blue, colour.alpha);
}

void CCanvas::fill(const CArea& area, CColour colour)
{
    setColour(colour);
    cairo_rectangle(cairo_.get(), area.left, area.top, area.width, area.height);
    cairo_fill(cairo_.get());
}

// On the middle of pixels, so that thin lines are sharp.
void CCanvas::line(CPoint from, CPoint to, CColour colour, double width)
{
    setColour(colour);
    cairo_set_line_width(cairo_.get(), width);
    cairo_move_to(cairo_.get(), std::floor(from.x) + 0.5, std::floor(from.y) + 0.5);
    cairo_line_to(cairo_.get(), std::floor(to.x) + 0.5, std::floor(to.y) + 0.5);
    cairo_stroke(cairo_.get());
}

void CCanvas::trace(const std::vector<CPoint>& points)
{
    for (const CPoint& point : points) {
        cairo_line_to(cairo_.get(), point.x, point.y);
    }
}

void CCanvas::polyline(const std::vector<CPoint>& points, CColour colour, double width)
{
    setColour(colour);
    cairo_set_line_width(cairo_.get(), width);
    trace(points);
    cairo_stroke(cairo_.get());
}

void CCanvas::polygon(const std::vector<CPoint>& points, CColour colour)
{
    setColour(colour);
    trace(points);
    cairo_close_path(cairo_.get());
    cairo_fill(cairo_.get());
}

namespace {

// Names of files need not be UTF-8, and cairo draws nothing more once it was given what is none.
std::string asUtf8(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t length = first < 0x80                    ? 1
                                   : first >= 0xC2 && first < 0xE0 ? 2
                                   : first >= 0xE0 && first < 0xF0 ? 3
                                                                   : 0;
        bool isGood = length > 0 && i + length <= text.size();
        for (std::size_t k = 1; isGood && k < length; ++k) {
            isGood = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
        }
        result += isGood ? text.substr(i, length) : "\xEF\xBF\xBD";
        i += isGood ? length : 1;
    }
    return result;
}

} // namespace

void CCanvas::text(CPoint at, const std::string& raw, double size, CColour colour, CAlign align, bool isBold)
{
    const std::string words = asUtf8(raw);
    setColour(colour);
    cairo_select_font_face(cairo_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo_.get(), size);
    cairo_text_extents_t extents;
    cairo_text_extents(cairo_.get(), words.c_str(), &extents);
    const double share = align == CAlign::kLeft ? 0.0 : align == CAlign::kCentre ? 0.5 : 1.0;
    cairo_move_to(cairo_.get(), std::round(at.x - share * extents.x_advance), std::round(at.y));
    cairo_show_text(cairo_.get(), words.c_str());
    cairo_new_path(cairo_.get());
}

void CCanvas::clipTo(const CArea& area)
{
    cairo_save(cairo_.get());
    cairo_rectangle(cairo_.get(), area.left, area.top, area.width, area.height);
    cairo_clip(cairo_.get());
}

void CCanvas::unclip()
{
    cairo_restore(cairo_.get());
}

bool CCanvas::writePng(const std::filesystem::path& path) const
{
    return cairo_status(cairo_.get()) == CAIRO_STATUS_SUCCESS &&
           cairo_surface_write_to_png(surface_.get(), path.c_str()) == CAIRO_STATUS_SUCCESS;
}

} // namespace qel::tools
