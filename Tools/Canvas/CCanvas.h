// A drawing surface for plots and outlines.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <cairo.h>

namespace qel::tools {

struct CColour
{
    double red;
    double green;
    double blue;
    double alpha = 1.0;
};

struct CPoint
{
    double x;
    double y;
};

struct CArea // pixels, y downwards
{
    double left;
    double top;
    double width;
    double height;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
};

enum class CAlign
{
    kLeft,
    kCentre,
    kRight,
};

// What tools need of cairo.
class CCanvas
{
public:
    CCanvas(int width, int height, CColour background);

    void fill(const CArea& area, CColour colour);
    void line(CPoint from, CPoint to, CColour colour, double width = 1.0);
    void polyline(const std::vector<CPoint>& points, CColour colour, double width);
    void polygon(const std::vector<CPoint>& points, CColour colour);
    // `at` is the end, or middle, of the base line.
    void text(CPoint at, const std::string& words, double size, CColour colour, CAlign align = CAlign::kLeft,
              bool isBold = false);
    void clipTo(const CArea& area);
    void unclip();
    // False if the file cannot be written.
    bool writePng(const std::filesystem::path& path) const;

private:
    void trace(const std::vector<CPoint>& points);
    void setColour(CColour colour);

    std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface_;
    std::unique_ptr<cairo_t, void (*)(cairo_t*)> cairo_;
};

} // namespace qel::tools
