// A layout as text, as JSON, and as a picture.
#include "Layout/PrintLayout.h"

#include "Canvas/CCanvas.h"
#include "TreeCompiler/ToolError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>

namespace qel::tools {

namespace {

constexpr int kMargin = 1; // so that outlines at the right and bottom edges are seen
constexpr double kMaxSide = 8192.0;

// Layouts are computed in single precision. Of all decimal numbers that mean the same one, the shortest is
// shown: 34.4, and not 34.400001525878906.
double shortest(double value)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, static_cast<float>(value)).ptr;
    double shown = value;
    std::from_chars(text, end, shown);
    return shown + 0.0; // a negative zero is zero
}

std::string lastName(const std::string& path)
{
    return path.substr(path.rfind('.') + 1);
}

void drawOutline(CCanvas& canvas, const CRect& rect, CColour colour)
{
    const CPoint corners[] = {{rect.x, rect.y},
                              {rect.right() - 1.0, rect.y},
                              {rect.right() - 1.0, rect.bottom() - 1.0},
                              {rect.x, rect.bottom() - 1.0}};
    for (std::size_t i = 0; i < 4; ++i) {
        canvas.line(corners[i], corners[(i + 1) % 4], colour);
    }
}

// Another corner for each depth, since views often share a corner with their parent.
void drawName(CCanvas& canvas, const CRect& rect, std::size_t depth, const std::string& name, CColour colour)
{
    constexpr double kTextPx = 9.0;
    constexpr double kGapPx = 3.0;
    const bool isLeft = depth % 2 != 0;
    const bool isTop = depth % 4 == 1 || depth % 4 == 2;
    const double x = isLeft ? rect.x + kGapPx : rect.right() - kGapPx;
    const double y = isTop ? rect.y + kTextPx + 1.0 : rect.bottom() - kGapPx;
    canvas.text({x, y}, name, kTextPx, colour, isLeft ? CAlign::kLeft : CAlign::kRight);
}

} // namespace

void printLayoutText(const std::vector<CLayoutTree::View>& views, std::ostream& out)
{
    out.precision(std::numeric_limits<float>::max_digits10);
    for (const auto& [path, rect] : views) {
        out << path << ' ' << shortest(rect.x) << ' ' << shortest(rect.y) << ' ' << shortest(rect.width)
            << ' ' << shortest(rect.height) << '\n';
    }
}

void printLayoutJson(const std::vector<CLayoutTree::View>& views, std::ostream& out)
{
    auto list = nlohmann::ordered_json::array();
    for (const auto& [path, rect] : views) {
        list.push_back({{"path", path},
                        {"x", shortest(rect.x)},
                        {"y", shortest(rect.y)},
                        {"width", shortest(rect.width)},
                        {"height", shortest(rect.height)}});
    }
    out << list.dump(2) << '\n';
}

void drawLayout(const std::vector<CLayoutTree::View>& views, const std::filesystem::path& png)
{
    constexpr CColour kGround = {0.09, 0.1, 0.11};
    constexpr CColour kColours[] = {
        {0.9, 0.9, 0.92}, {1.0, 0.7, 0.29}, {0.33, 0.69, 1.0}, {0.42, 0.87, 0.6}, {1.0, 0.42, 0.37}};
    CRect all;
    for (const auto& view : views) {
        all = all.unitedWith(view.rect);
    }
    const auto side = [](double end) {
        return static_cast<int>(std::clamp(std::ceil(end), 1.0, kMaxSide)) + kMargin;
    };
    CCanvas canvas(side(all.right()), side(all.bottom()), kGround);
    for (const auto& [path, rect] : views) {
        if (rect.isEmpty()) {
            continue;
        }
        const auto depth = static_cast<std::size_t>(std::ranges::count(path, '.'));
        const CColour colour = kColours[depth % std::size(kColours)];
        drawOutline(canvas, rect, colour);
        canvas.clipTo({rect.x, rect.y, rect.width, rect.height});
        drawName(canvas, rect, depth, lastName(path), colour);
        canvas.unclip();
    }
    if (!canvas.writePng(png)) {
        throw CToolError(png.string() + ": cannot be written");
    }
}

} // namespace qel::tools
