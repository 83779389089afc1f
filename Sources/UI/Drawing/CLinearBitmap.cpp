// A bitmap in memory, and everything that is painted into it.
#include "CLinearBitmap.h"

#include "CDrawLoad.h"
#include "PixelSpans.h"

#include <cstring>
#include <new>

namespace qel {

namespace {

constexpr std::align_val_t kAlignment{16};
constexpr std::int32_t kPixelBytes = 4;

// `weight`, 0 to 1, in whole steps; NaN is 0.
std::int32_t scaledWeight(double weight, std::int32_t full)
{
    if (!(weight > 0.0)) {
        return 0;
    }
    return static_cast<std::int32_t>(std::floor(std::min(weight, 1.0) * full + 0.5));
}

} // namespace

void CLinearBitmap::Free::operator()(std::uint8_t* memory) const
{
    ::operator delete(memory, kAlignment);
}

CError CLinearBitmap::resize(std::int32_t width, std::int32_t height)
{
    if (width == width_ && height == height_) {
        return {};
    }
    attach(nullptr, 0, 0, 0);
    memory_.reset();
    if (width == 0 || height == 0) {
        return {};
    }
    if (width < 0 || height < 0 || width > kMaxSidePx || height > kMaxSidePx) {
        QEL_FAIL({}, "@qelstr_CLinearBitmap_resize_Size No bitmap can be %1 x %2 pixels.", width, height);
    }
    const std::size_t bytes =
        static_cast<std::size_t>(width) * kPixelBytes * static_cast<std::size_t>(height);
    memory_.reset(static_cast<std::uint8_t*>(::operator new(bytes, kAlignment, std::nothrow)));
    if (!memory_) {
        QEL_FAIL({}, "@qelstr_CLinearBitmap_resize_Memory No memory for a bitmap of %1 x %2 pixels.", width,
                 height);
    }
    attach(memory_.get(), width, height, width * kPixelBytes);
    clear();
    return {};
}

void CLinearBitmap::attach(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t pitch)
{
    pixels_ = pixels;
    width_ = width;
    height_ = height;
    pitch_ = pitch;
}

// --- whole bitmaps

void CLinearBitmap::clear()
{
    for (std::int32_t y = 0; y < height_; ++y) {
        spans::fill(getRow(y), width_, 0);
    }
}

CError CLinearBitmap::copyFrom(const CLinearBitmap& source)
{
    QEL_TRY(resize(source.width_, source.height_), {});
    copyRect(source, getBounds());
    return {};
}

void CLinearBitmap::copyRect(const CLinearBitmap& source, const CPixelRect& rect)
{
    const CPixelRect visible = rect.intersectedWith(getBounds()).intersectedWith(source.getBounds());
    for (std::int32_t y = visible.y; y < visible.bottom(); ++y) {
        std::memcpy(getRow(y) + visible.x, source.getRow(y) + visible.x,
                    static_cast<std::size_t>(visible.width) * kPixelBytes);
    }
}

void CLinearBitmap::blendRect(const CLinearBitmap& source, const CPixelRect& rect, double weight)
{
    constexpr std::int32_t kFull = 65536;
    const std::int32_t scaled = scaledWeight(weight, kFull);
    if (scaled == 0) {
        return;
    }
    if (scaled == kFull) {
        copyRect(source, rect);
        return;
    }
    const CPixelRect visible = rect.intersectedWith(getBounds()).intersectedWith(source.getBounds());
    for (std::int32_t y = visible.y; y < visible.bottom(); ++y) {
        spans::crossFade(getRow(y) + visible.x, visible.width, source.getRow(y) + visible.x, scaled);
    }
}

// --- painting

void CLinearBitmap::fillRect(const CPixelRect& rect, const CPixelRect& clip, const CPaletteColor& color,
                             double opacity)
{
    constexpr std::int32_t kFull = 255;
    const CPixelRect visible = rect.intersectedWith(clip).intersectedWith(getBounds());
    drawing::addDrawCost(drawing::kFillCost + visible.area());
    const std::int32_t weight = scaledWeight(color.opacity * opacity, kFull);
    const std::uint32_t solid = spans::solidPixel(color);
    for (std::int32_t y = visible.y; y < visible.bottom(); ++y) {
        std::uint32_t* const row = getRow(y) + visible.x;
        if (weight == kFull) {
            spans::fill(row, visible.width, solid);
        } else {
            spans::tint(row, visible.width, solid, weight);
        }
    }
}

void CLinearBitmap::invertRect(const CPixelRect& rect, const CPixelRect& clip)
{
    const CPixelRect visible = rect.intersectedWith(clip).intersectedWith(getBounds());
    drawing::addDrawCost(visible.area());
    for (std::int32_t y = visible.y; y < visible.bottom(); ++y) {
        spans::invert(getRow(y) + visible.x, visible.width);
    }
}

void CLinearBitmap::paintCoverage(const std::uint8_t* coverage, std::int32_t pitch, const CPixelRect& rect,
                                  const CPaletteColor& color, double opacity)
{
    drawing::addDrawCost(drawing::kBlitCost + rect.area());
    const std::int32_t weight = scaledWeight(color.opacity * opacity, kFullWeight);
    const spans::OneColor source{spans::solidPixel(color)};
    for (std::int32_t y = 0; y < rect.height; ++y) {
        const spans::AlphaBytes alphas{coverage + static_cast<std::ptrdiff_t>(y) * pitch};
        spans::blendAlphas(getRow(rect.y + y) + rect.x, rect.width, source, alphas, weight);
    }
}

} // namespace qel
