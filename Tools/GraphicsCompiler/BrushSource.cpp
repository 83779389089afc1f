// Brush sets, computed from line widths.
#include "GraphicsCompiler/BrushSource.h"

#include "GraphicsCompiler/CSourceElement.h"

#include <algorithm>
#include <cmath>

namespace qel::tools {

namespace {

constexpr double kSoftEdge = 0.5;
// Lines in a pixel on which the disc's width is measured. Along a line it is exact, so the result is far
// closer than a byte can tell.
constexpr int kLines = 256;

// Share of the pixel with its corner at (x, y) that the disc around (0, 0) covers.
double coverage(double x, double y, double discRadius)
{
    double sum = 0.0;
    for (int line = 0; line < kLines; ++line) {
        const double height = y + (line + 0.5) / kLines;
        const double squared = discRadius * discRadius - height * height;
        if (squared > 0.0) {
            const double half = std::sqrt(squared);
            sum += std::max(0.0, std::min(x + 1.0, half) - std::max(x, -half));
        }
    }
    return sum / kLines;
}

CBrushVariant stampsOf(double width, std::uint32_t oversampling, double scale)
{
    const double discRadius = width * scale / 2;
    CBrushVariant variant;
    variant.scale = scale;
    variant.radius = discRadius + kSoftEdge;
    variant.size = static_cast<std::uint32_t>(std::ceil(2 * variant.radius)) + 1;
    const std::uint32_t positions = 1u << oversampling;
    for (std::uint32_t fy = 0; fy < positions; ++fy) {
        for (std::uint32_t fx = 0; fx < positions; ++fx) {
            const double centreX = variant.radius + static_cast<double>(fx) / positions;
            const double centreY = variant.radius + static_cast<double>(fy) / positions;
            for (std::uint32_t y = 0; y < variant.size; ++y) {
                for (std::uint32_t x = 0; x < variant.size; ++x) {
                    const double share = coverage(x - centreX, y - centreY, discRadius);
                    variant.table.push_back(static_cast<std::uint8_t>(std::lround(255.0 * share)));
                }
            }
        }
    }
    return variant;
}

} // namespace

CBrushSetFile compileBrushSet(CXmlSource& source, std::vector<std::filesystem::path>&)
{
    CBrushSetFile result;
    auto root = rootElement(source, "brush-set");
    if (!root) {
        return result;
    }
    const std::uint32_t oversampling = root->count("oversampling", 0, 6);
    for (CSourceElement& element : root->children()) {
        if (element.name() != "brush") {
            element.report("<brush-set> holds no <" + element.name() + ">");
            continue;
        }
        CBrush& brush = result.brushes.emplace_back();
        brush.width = element.number("width", 0.0, 64.0);
        brush.oversampling = oversampling;
        element.close();
        for (const double scale : kGraphicsScales) {
            brush.variants.push_back(stampsOf(brush.width, oversampling, scale));
        }
    }
    return result;
}

} // namespace qel::tools
