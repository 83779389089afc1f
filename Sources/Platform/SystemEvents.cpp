// Arithmetic of pixel rectangles.
#include "SystemEvents.h"

#include <algorithm>

namespace qel::platform {

PixelRect unite(const PixelRect& a, const PixelRect& b)
{
    if (a.isEmpty() || b.isEmpty()) {
        return a.isEmpty() ? b : a;
    }
    const int x = std::min(a.x, b.x);
    const int y = std::min(a.y, b.y);
    return {x, y, std::max(a.x + a.width, b.x + b.width) - x, std::max(a.y + a.height, b.y + b.height) - y};
}

PixelRect intersect(const PixelRect& a, const PixelRect& b)
{
    const int x = std::max(a.x, b.x);
    const int y = std::max(a.y, b.y);
    const PixelRect both{x, y, std::min(a.x + a.width, b.x + b.width) - x,
                         std::min(a.y + a.height, b.y + b.height) - y};
    return both.isEmpty() ? PixelRect{} : both;
}

} // namespace qel::platform
