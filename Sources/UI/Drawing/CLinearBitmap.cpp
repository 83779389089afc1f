// A bitmap in memory, and everything that is painted into it.
#include "CLinearBitmap.h"

#include "CDrawLoad.h"
#include "PixelSpans.h"

#include <array>
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

// A colour's shades as pixels, so that an image's value needs one look-up and not three.
class Shades
{
public:
    explicit Shades(const CPaletteColor& color)
    {
        std::size_t i = 0;
#if defined(__SSE2__)
        const auto load = [&i](const std::array<std::uint8_t, 256>& channel) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(channel.data() + i));
        };
        for (; i < pixels_.size(); i += 16) {
            const __m128i blue = load(color.blue);
            const __m128i green = load(color.green);
            const __m128i red = load(color.red);
            const __m128i zero = _mm_setzero_si128();
            const __m128i lowPairs = _mm_unpacklo_epi8(blue, green);
            const __m128i highPairs = _mm_unpackhi_epi8(blue, green);
            const __m128i lowReds = _mm_unpacklo_epi8(red, zero);
            const __m128i highReds = _mm_unpackhi_epi8(red, zero);
            spans::storeFour(pixels_.data() + i, _mm_unpacklo_epi16(lowPairs, lowReds));
            spans::storeFour(pixels_.data() + i + 4, _mm_unpackhi_epi16(lowPairs, lowReds));
            spans::storeFour(pixels_.data() + i + 8, _mm_unpacklo_epi16(highPairs, highReds));
            spans::storeFour(pixels_.data() + i + 12, _mm_unpackhi_epi16(highPairs, highReds));
        }
#endif
        for (; i < pixels_.size(); ++i) {
            pixels_[i] =
                color.blue[i] | (std::uint32_t{color.green[i]} << 8) | (std::uint32_t{color.red[i]} << 16);
        }
    }

    std::uint32_t operator[](std::uint8_t value) const
    {
        return pixels_[value];
    }

private:
    std::array<std::uint32_t, 256> pixels_;
};

// --- sources of spans: pixels as the runs hold them

// Values that stand `step` bytes apart.
template <std::int32_t step>
struct ShadeBytes
{
    const Shades& shades;
    const std::uint8_t* data;

    std::uint32_t at(std::int32_t i) const { return shades[data[step * i]]; }
#if defined(__SSE2__)
    __m128i fourAt(std::int32_t i) const
    {
        return _mm_set_epi32(static_cast<int>(at(i + 3)), static_cast<int>(at(i + 2)),
                             static_cast<int>(at(i + 1)), static_cast<int>(at(i)));
    }
#endif
};

// Value, alpha.
struct AlphasOfPairs
{
    const std::uint8_t* data;

    std::uint8_t at(std::int32_t i) const { return data[2 * i + 1]; }
#if defined(__SSE2__)
    __m128i fourAt(std::int32_t i) const
    {
        const __m128i pairs = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(data + 2 * i));
        return _mm_srli_epi32(_mm_unpacklo_epi16(pairs, _mm_setzero_si128()), 8);
    }
#endif
};

// Blue, green and red that stand `step` bytes apart.
template <std::int32_t step>
struct TrueColors
{
    const std::uint8_t* data;

    std::uint32_t at(std::int32_t i) const
    {
        const std::uint8_t* const pixel = data + step * i;
        return pixel[0] | (std::uint32_t{pixel[1]} << 8) | (std::uint32_t{pixel[2]} << 16);
    }
#if defined(__SSE2__)
    __m128i fourAt(std::int32_t i) const
    {
        return _mm_set_epi32(static_cast<int>(at(i + 3)), static_cast<int>(at(i + 2)),
                             static_cast<int>(at(i + 1)), static_cast<int>(at(i)));
    }
#endif
};

// Blue, green, red, alpha.
struct AlphasOfColors
{
    const std::uint8_t* data;

    std::uint8_t at(std::int32_t i) const { return data[4 * i + 3]; }
#if defined(__SSE2__)
    __m128i fourAt(std::int32_t i) const
    {
        return _mm_srli_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 4 * i)), 24);
    }
#endif
};

// --- what the three forms of pixels paint. `isPlain`: what has no alpha is stored as it is.

template <bool isPlain, class Source>
void paintEven(std::uint32_t* target, std::int32_t count, Source source, std::int32_t weight)
{
    if constexpr (isPlain) {
        for (std::int32_t i = 0; i < count; ++i) {
            target[i] = source.at(i);
        }
    } else {
        spans::blendEven(target, count, source, weight);
    }
}

// One byte: the colour itself through an alpha.
struct GlyphSpans
{
    static constexpr std::int32_t kBytes = 1;

    std::uint32_t color;
    std::int32_t weight;

    void paintAlphas(std::uint32_t* target, std::int32_t count, const std::uint8_t* data) const
    {
        spans::blendAlphas(target, count, spans::OneColor{color}, spans::AlphaBytes{data}, weight);
    }
    template <bool isPlain>
    void paintOpaque(std::uint32_t* target, std::int32_t count, const std::uint8_t*) const
    {
        if constexpr (isPlain) {
            spans::fill(target, count, color);
        } else {
            spans::blendEven(target, count, spans::OneColor{color}, weight);
        }
    }
};

// Two bytes: a shade of the colour, and an alpha.
struct ShadeSpans
{
    static constexpr std::int32_t kBytes = 2;

    Shades shades;
    std::int32_t weight;

    void paintAlphas(std::uint32_t* target, std::int32_t count, const std::uint8_t* data) const
    {
        spans::blendAlphas(target, count, ShadeBytes<2>{shades, data}, AlphasOfPairs{data}, weight);
    }
    template <bool isPlain>
    void paintOpaque(std::uint32_t* target, std::int32_t count, const std::uint8_t* data) const
    {
        paintEven<isPlain>(target, count, ShadeBytes<1>{shades, data}, weight);
    }
};

// Four bytes: true colour, and an alpha.
struct TrueColorSpans
{
    static constexpr std::int32_t kBytes = 4;

    std::int32_t weight;

    void paintAlphas(std::uint32_t* target, std::int32_t count, const std::uint8_t* data) const
    {
        spans::blendAlphas(target, count, TrueColors<4>{data}, AlphasOfColors{data}, weight);
    }
    template <bool isPlain>
    void paintOpaque(std::uint32_t* target, std::int32_t count, const std::uint8_t* data) const
    {
        paintEven<isPlain>(target, count, TrueColors<3>{data}, weight);
    }
};

// Paints the columns `first` to `end` of a row's runs; `target` is where column `first` goes.
template <bool isPlain, class Spans>
void paintRow(std::uint32_t* target, const std::uint8_t* runs, std::int32_t first, std::int32_t end,
              const Spans& spans)
{
    for (std::int32_t column = 0; column < end;) {
        unsigned code = *runs++;
        if ((code & CImageLayer::kLongRunFlag) != 0) {
            code |= static_cast<unsigned>(*runs++) << 8;
        }
        const unsigned kind = code & CImageLayer::kRunKindMask;
        const auto count = static_cast<std::int32_t>(code >> CImageLayer::kRunCountShift);
        const std::int32_t bytes = kind == CImageLayer::kTransparentRun ? 0
                                   : kind == CImageLayer::kAlphaRun     ? Spans::kBytes
                                                                        : Spans::kBytes - 1;
        const std::uint8_t* const data = runs;
        const std::int32_t runStart = column;
        runs += static_cast<std::ptrdiff_t>(count) * bytes;
        column += count;
        const std::int32_t start = std::max(runStart, first);
        const std::int32_t length = std::min(column, end) - start;
        if (kind == CImageLayer::kTransparentRun || length <= 0) {
            continue;
        }
        const std::uint8_t* const pixels = data + static_cast<std::ptrdiff_t>(start - runStart) * bytes;
        if (kind == CImageLayer::kAlphaRun) {
            spans.paintAlphas(target + (start - first), length, pixels);
        } else {
            spans.template paintOpaque<isPlain>(target + (start - first), length, pixels);
        }
    }
}

template <bool isPlain, class Spans>
void paintRows(CLinearBitmap& target, const CImageLayer& layer, const CPixelRect& visible,
               std::int32_t rasterX, std::int32_t rasterY, const Spans& spans)
{
    for (std::int32_t y = visible.y; y < visible.bottom(); ++y) {
        if (const std::uint8_t* const runs = layer.findRow(y - rasterY)) {
            paintRow<isPlain>(target.getRow(y) + visible.x, runs, visible.x - rasterX,
                              visible.right() - rasterX, spans);
        }
    }
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

void CLinearBitmap::blit(const CImageLayer& layer, std::int32_t x, std::int32_t y, const CPixelRect& clip,
                         const CPaletteColor& color, double opacity)
{
    drawing::addDrawCost(drawing::kBlitCost);
    const CPixelRect raster{x + layer.originX, y + layer.originY, layer.rasterWidth, layer.rasterHeight};
    const CPixelRect visible = raster.intersectedWith(clip).intersectedWith(getBounds());
    const double wanted = color.opacity * opacity * kFullWeight;
    if (visible.isEmpty() || layer.raster.empty() || !(wanted > 0.0)) {
        return;
    }
    drawing::addDrawCost(visible.area());
    const auto weight = static_cast<std::int32_t>(std::floor(std::min<double>(wanted, kFullWeight) + 0.5));
    const auto paint = [&](const auto& spans) {
        if (weight >= kPlainWeight) {
            paintRows<true>(*this, layer, visible, raster.x, raster.y, spans);
        } else {
            paintRows<false>(*this, layer, visible, raster.x, raster.y, spans);
        }
    };
    switch (layer.bytesPerPixel) {
    case 1:
        paint(GlyphSpans{spans::solidPixel(color), weight});
        break;
    case 2:
        paint(ShadeSpans{Shades(color), weight});
        break;
    default:
        paint(TrueColorSpans{weight});
    }
}

} // namespace qel
