// An image that runs through all shades of a colour.
#include "CShadeRamp.h"

#include "CCriticalSection.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace qel {

namespace {

// Wide enough that repeating it costs little.
constexpr std::int32_t kWidthPx = 64;

// About one step of a screen in a panel's ramp, whose ends are some nine steps apart.
constexpr double kDither = 28.0;

// Order of the pixels of an 8 x 8 square, each as far as possible from those before it: the bits of x ^ y and
// y, interleaved from the lowest to the highest. 0 to 63.
std::int32_t orderedPlace(std::int32_t x, std::int32_t y)
{
    std::int32_t place = 0;
    for (int bit = 0; bit < 3; ++bit) {
        place = (place << 2) | ((((x ^ y) >> bit) & 1) << 1) | ((y >> bit) & 1);
    }
    return place;
}

std::uint8_t shadeAt(std::int32_t x, std::int32_t y, std::int32_t height)
{
    const double ramp = 255.0 * (1.0 - (y + 0.5) / height);
    const double noise = (orderedPlace(x & 7, y & 7) + 0.5) / 64.0 - 0.5;
    return static_cast<std::uint8_t>(std::clamp(std::lround(ramp + noise * kDither), 0L, 255L));
}

} // namespace

CShadeRamp::CShadeRamp(std::int32_t heightPx)
{
    std::vector<std::uint8_t> pixels(4 * static_cast<std::size_t>(kWidthPx) *
                                     static_cast<std::size_t>(heightPx));
    std::uint8_t* pixel = pixels.data();
    for (std::int32_t y = 0; y < heightPx; ++y) {
        for (std::int32_t x = 0; x < kWidthPx; ++x, pixel += 4) {
            pixel[0] = shadeAt(x, y, heightPx);
            pixel[3] = 255;
        }
    }
    raster_ = CImage::buildRaster(pixels.data(), kWidthPx, heightPx, 4 * kWidthPx, 2);
    layer_.width = layer_.rasterWidth = kWidthPx;
    layer_.height = layer_.rasterHeight = heightPx;
    layer_.raster = raster_;
    image_.layers = {&layer_, 1};
}

std::shared_ptr<const CShadeRamp> CShadeRamp::share(std::int32_t heightPx)
{
    // Two hosts' windows may live on two threads.
    static CCriticalSection section;
    static std::map<std::int32_t, std::weak_ptr<const CShadeRamp>> ramps;
    const CLock lock(section);
    std::weak_ptr<const CShadeRamp>& known = ramps[heightPx];
    std::shared_ptr<const CShadeRamp> ramp = known.lock();
    if (!ramp) {
        std::erase_if(ramps,
                      [&](const auto& entry) { return entry.first != heightPx && entry.second.expired(); });
        ramp = std::make_shared<CShadeRamp>(heightPx);
        known = ramp;
    }
    return ramp;
}

} // namespace qel
