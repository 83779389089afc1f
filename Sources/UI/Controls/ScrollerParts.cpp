// Where the parts of a scroll bar lie.
#include "ScrollerParts.h"

#include <algorithm>

namespace qel {

namespace {

constexpr double kAll = 1.0 - 1e-6;

} // namespace

ScrollerParts layoutScroller(double length, double button, double minBar, double ratio, double offset)
{
    ScrollerParts parts;
    parts.length = length;
    // Without room for a track between them there are no buttons.
    parts.button = length > 3.0 * button ? button : 0.0;
    const double track = parts.trackLength();
    parts.barLength = std::min(std::max(track * std::clamp(ratio, 0.0, 1.0), minBar), track);
    const double place = ratio < kAll ? std::clamp(offset / (1.0 - ratio), 0.0, 1.0) : 0.0;
    parts.barStart = parts.trackStart() + parts.travel() * place;
    return parts;
}

double scrollerOffsetAt(const ScrollerParts& parts, double barStart, double ratio)
{
    const double travel = parts.travel();
    if (travel <= 0.0 || ratio >= kAll) {
        return 0.0;
    }
    return std::clamp((barStart - parts.trackStart()) / travel, 0.0, 1.0) * (1.0 - ratio);
}

} // namespace qel
