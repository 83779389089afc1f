// Time of painting a pixel in each form, against copying as many bytes, and of repainting a window.
#include "CDrawContext.h"
#include "COffscreenSurface.h"
#include "CSectorMap.h"
#include "GraphicsBytes.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <ctime>
#include <memory>
#include <stdexcept>

namespace qel {
namespace {

using test::Picture;

constexpr std::int32_t kSidePx = 128;

void requireSuccess(CError error)
{
    if (error) {
        throw std::runtime_error(error.text());
    }
}

CPaletteColor someColor()
{
    CPaletteColor color;
    for (std::size_t i = 0; i < 256; ++i) {
        color.red[i] = color.green[i] = color.blue[i] = static_cast<std::uint8_t>(i);
    }
    return color;
}

// What an image consists of.
enum Content
{
    kOpaque,
    kHalfTransparent,
    kTransparent,
    kMixed // soft edges, solid inside: as images are
};

Picture pictureOf(Content content, std::int32_t side)
{
    Picture picture(side, side);
    const double center = side * 0.5;
    for (std::int32_t y = 0; y < side; ++y) {
        for (std::int32_t x = 0; x < side; ++x) {
            const double distance = std::hypot(x + 0.5 - center, y + 0.5 - center);
            const double edge = std::clamp((center - distance) * 64.0, 0.0, 255.0);
            const double alphas[] = {255.0, 127.0, 0.0, edge};
            std::uint8_t* const pixel = picture.at(x, y);
            pixel[0] = pixel[1] = pixel[2] = static_cast<std::uint8_t>(x + 3 * y);
            pixel[3] = static_cast<std::uint8_t>(alphas[content]);
        }
    }
    return picture;
}

// Runs the benchmark's loop and reports "ns/px" of processor time.
template <class Function>
void timePerPixel(benchmark::State& state, std::int64_t pixels, Function function)
{
    const std::clock_t start = std::clock();
    for (auto _ : state) {
        function();
        benchmark::ClobberMemory();
    }
    const double elapsedNs = static_cast<double>(std::clock() - start) * (1e9 / CLOCKS_PER_SEC);
    state.counters["ns/px"] =
        elapsedNs / (static_cast<double>(pixels) * static_cast<double>(state.iterations()));
}

void blit(benchmark::State& state, std::uint32_t bytesPerPixel, Content content, double opacity)
{
    CLinearBitmap bitmap;
    requireSuccess(bitmap.resize(kSidePx, kSidePx));
    const Picture picture = pictureOf(content, kSidePx);
    const std::vector<std::uint8_t> raster = picture.code(bytesPerPixel);
    CImageLayer layer;
    layer.bytesPerPixel = bytesPerPixel;
    layer.rasterWidth = layer.rasterHeight = kSidePx;
    layer.raster = raster;
    const CPaletteColor color = someColor();
    timePerPixel(state, kSidePx * kSidePx,
                 [&] { bitmap.blit(layer, 0, 0, bitmap.getBounds(), color, opacity); });
}

void glyph(benchmark::State& state)
{
    CLinearBitmap bitmap;
    requireSuccess(bitmap.resize(kSidePx, kSidePx));
    const Picture picture = pictureOf(kMixed, 8);
    const std::vector<std::uint8_t> raster = picture.code(1);
    CImageLayer layer;
    layer.bytesPerPixel = 1;
    layer.rasterWidth = layer.rasterHeight = 8;
    layer.raster = raster;
    const CPaletteColor color = someColor();
    timePerPixel(state, 64, [&] { bitmap.blit(layer, 50, 50, bitmap.getBounds(), color, 1.0); });
}

void copy(benchmark::State& state)
{
    CLinearBitmap from;
    CLinearBitmap to;
    requireSuccess(from.resize(kSidePx, kSidePx));
    requireSuccess(to.resize(kSidePx, kSidePx));
    timePerPixel(state, kSidePx * kSidePx,
                 [&] { std::memcpy(to.getRow(0), from.getRow(0), 4 * kSidePx * kSidePx); });
}

void fill(benchmark::State& state, double opacity)
{
    CLinearBitmap bitmap;
    requireSuccess(bitmap.resize(kSidePx, kSidePx));
    const CPaletteColor color = someColor();
    timePerPixel(state, kSidePx * kSidePx,
                 [&] { bitmap.fillRect(bitmap.getBounds(), bitmap.getBounds(), color, opacity); });
}

void crossFade(benchmark::State& state)
{
    CLinearBitmap from;
    CLinearBitmap to;
    requireSuccess(from.resize(kSidePx, kSidePx));
    requireSuccess(to.resize(kSidePx, kSidePx));
    timePerPixel(state, kSidePx * kSidePx, [&] { to.blendRect(from, to.getBounds(), 0.3); });
}

BENCHMARK(copy)->Name("drawing/memcpy");
BENCHMARK_CAPTURE(blit, 1_opaque, 1, kOpaque, 1.0)->Name("drawing/blit/1 byte/opaque/plain");
BENCHMARK_CAPTURE(blit, 1_opaque_blended, 1, kOpaque, 0.5)->Name("drawing/blit/1 byte/opaque/blended");
BENCHMARK_CAPTURE(blit, 1_alpha, 1, kHalfTransparent, 1.0)->Name("drawing/blit/1 byte/alpha");
BENCHMARK(glyph)->Name("drawing/blit/1 byte/glyph of 8 x 8");
BENCHMARK_CAPTURE(blit, 2_opaque, 2, kOpaque, 1.0)->Name("drawing/blit/2 bytes/opaque/plain");
BENCHMARK_CAPTURE(blit, 2_opaque_blended, 2, kOpaque, 0.5)->Name("drawing/blit/2 bytes/opaque/blended");
BENCHMARK_CAPTURE(blit, 2_alpha, 2, kHalfTransparent, 1.0)->Name("drawing/blit/2 bytes/alpha");
BENCHMARK_CAPTURE(blit, 2_mixed, 2, kMixed, 1.0)->Name("drawing/blit/2 bytes/disc");
BENCHMARK_CAPTURE(blit, 4_opaque, 4, kOpaque, 1.0)->Name("drawing/blit/4 bytes/opaque/plain");
BENCHMARK_CAPTURE(blit, 4_opaque_blended, 4, kOpaque, 0.5)->Name("drawing/blit/4 bytes/opaque/blended");
BENCHMARK_CAPTURE(blit, 4_alpha, 4, kHalfTransparent, 1.0)->Name("drawing/blit/4 bytes/alpha");
BENCHMARK_CAPTURE(blit, transparent, 2, kTransparent, 1.0)->Name("drawing/blit/transparent");
BENCHMARK_CAPTURE(fill, plain, 1.0)->Name("drawing/fill/plain");
BENCHMARK_CAPTURE(fill, blended, 0.5)->Name("drawing/fill/blended");
BENCHMARK(crossFade)->Name("drawing/blend of bitmaps");

// --- a window like the main one: ground, panels, and knobs, captions, buttons and meters on them

class BenchView : public CSectorView
{
public:
    enum class Look
    {
        kGround,
        kPanel,
        kKnob,
        kCaption,
        kMeter
    };

    BenchView(CSectorMap& map, Look look, const CRect& area, const std::vector<CImage>& images)
        : look_(look), images_(images)
    {
        allocateClips(1);
        map.setViewDynamic(*this, look == Look::kMeter);
        map.setViewZIndex(*this, static_cast<std::int32_t>(look));
        map.addView(*this);
        map.moveView(*this, area, area);
        setClip(1, area);
    }

    void selectFadeSide(FadeSide) override {}
    const CPaletteColor* getSlotColor(std::uint32_t) override { return &color_; }
    void drawInto(CDrawContext& context) override
    {
        const CRect all{0.0, 0.0, getArea().width, getArea().height};
        switch (look_) {
        case Look::kGround:
            context.drawFilledRect(0, all, 1, 1.0);
            context.drawImage(&images_[0], {}, 1, 0.3, true, true);
            break;
        case Look::kPanel:
            context.drawFilledRect(0, all, 1, 0.9);
            context.drawImage(&images_[1], {}, 1, 1.0, true, false);
            break;
        case Look::kKnob:
            for (int layer = 0; layer < 3; ++layer) {
                context.drawImage(&images_[2], {}, 1, 1.0);
            }
            break;
        case Look::kCaption:
            for (int i = 0; i < 12; ++i) {
                context.drawImage(&images_[3], {6.0 * i, 2.0}, 1, 1.0);
            }
            break;
        case Look::kMeter:
            for (int i = 0; i < 40; ++i) {
                context.drawFilledRect(0, {0.0, 4.0 * i, all.width, 3.0}, 1, 0.8);
            }
        }
    }

private:
    Look look_;
    const std::vector<CImage>& images_;
    CPaletteColor color_ = someColor();
};

struct Window
{
    Window()
    {
        addImage(2, 256, kHalfTransparent);
        addImage(2, 48, kMixed);
        addImage(2, 74, kMixed);
        addImage(1, 8, kMixed);
        requireSuccess(map.resize(540.0, 373.0));
        using Look = BenchView::Look;
        add(Look::kGround, {0, 0, 540, 373});
        for (int i = 0; i < 6; ++i) {
            add(Look::kPanel, {8.0 + 88.0 * i, 30, 84, 320});
        }
        for (int i = 0; i < 24; ++i) {
            const double x = 13.0 + 88.0 * (i % 6);
            const double y = 34.0 + 78.0 * (i / 6);
            add(Look::kKnob, {x, y, 74, 74});
            add(Look::kCaption, {x, y + 62.0, 74, 14});
        }
        for (int i = 0; i < 4; ++i) {
            meters.push_back(add(Look::kMeter, {500.0 + 9.0 * i, 40, 8, 160}));
        }
        paint();
    }

    void addImage(std::uint32_t bytesPerPixel, std::int32_t side, Content content)
    {
        rasters.push_back(
            std::make_unique<std::vector<std::uint8_t>>(pictureOf(content, side).code(bytesPerPixel)));
        layers.push_back(std::make_unique<CImageLayer>());
        CImageLayer& layer = *layers.back();
        layer.bytesPerPixel = bytesPerPixel;
        layer.width = layer.height = layer.rasterWidth = layer.rasterHeight = side;
        layer.raster = *rasters.back();
        images.push_back({0, {&layer, 1}});
    }
    BenchView* add(BenchView::Look look, const CRect& area)
    {
        views.push_back(std::make_unique<BenchView>(map, look, area, images));
        return views.back().get();
    }
    void paint()
    {
        map.paintDirty();
        map.present();
    }

    std::vector<std::unique_ptr<std::vector<std::uint8_t>>> rasters;
    std::vector<std::unique_ptr<CImageLayer>> layers;
    std::vector<CImage> images;
    COffscreenSurface surface;
    CSectorMap map{surface};
    std::vector<std::unique_ptr<BenchView>> views;
    std::vector<BenchView*> meters;
};

void repaintWindow(benchmark::State& state)
{
    Window window;
    for (auto _ : state) {
        window.map.markAll();
        window.paint();
    }
    state.counters["views"] = static_cast<double>(window.views.size());
}

void repaintMeters(benchmark::State& state)
{
    Window window;
    for (auto _ : state) {
        for (BenchView* const meter : window.meters) {
            window.map.markView(*meter);
        }
        window.paint();
    }
}

// A static strip across the window, as when a hint changes in the status line.
void repaintStrip(benchmark::State& state)
{
    Window window;
    for (auto _ : state) {
        window.map.markDirty({0, 355, 540, 18}, *window.views[0]);
        window.paint();
    }
}

void frameWithoutChange(benchmark::State& state)
{
    Window window;
    for (auto _ : state) {
        window.paint();
    }
}

BENCHMARK(repaintWindow)->Name("drawing/window 540 x 373/whole")->Unit(benchmark::kMicrosecond);
BENCHMARK(repaintStrip)->Name("drawing/window 540 x 373/static strip")->Unit(benchmark::kMicrosecond);
BENCHMARK(repaintMeters)->Name("drawing/window 540 x 373/four meters")->Unit(benchmark::kMicrosecond);
BENCHMARK(frameWithoutChange)->Name("drawing/window 540 x 373/no change");

} // namespace
} // namespace qel
