// Fuzz target: graphics files of all four kinds, from the stream to the pixels.
#include "CBrushSet.h"
#include "CDrawContext.h"
#include "CFont.h"
#include "CImageSet.h"
#include "COffscreenSurface.h"
#include "CPalette.h"
#include "CSectorMap.h"
#include "FuzzTarget.h"
#include "GraphicsBytes.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <array>
#include <cstdlib>

namespace qel {
namespace {

// The first byte of an input tells what the rest is.
enum Kind : std::uint8_t
{
    kImageSet,
    kFont,
    kBrushSet,
    kPalette,
    kKinds
};

class Canvas : public CSectorView
{
public:
    Canvas()
    {
        releaseError(map_.resize(kSectorPx, kSectorPx));
        releaseError(bitmap_.resize(kSectorPx, kSectorPx));
        constexpr CRect kArea{0.0, 0.0, kSectorPx, kSectorPx};
        allocateClips(1);
        map_.addView(*this);
        map_.moveView(*this, kArea, kArea);
        setClip(1, kArea);
    }

    void selectFadeSide(FadeSide) override {}
    const CPaletteColor* getSlotColor(std::uint32_t) override { return &color_; }
    void drawInto(CDrawContext&) override {}

    void paint(const CImageSet& images)
    {
        constexpr CPixelRect kClip{1, 2, 120, 100};
        std::size_t left = 16; // layers are bounded in size, not in number
        for (const CImage& image : images.getImages()) {
            for (const CImageLayer& layer : image.layers) {
                if (left-- == 0) {
                    return;
                }
                bitmap_.blit(layer, 0, 0, kClip, color_, 1.0);
                bitmap_.blit(layer, -layer.rasterWidth / 2, 3 - layer.rasterHeight / 2, kClip, color_, 0.5);
            }
        }
    }

    void paint(const CBrushSet& brushes)
    {
        constexpr std::array<CPoint, 3> kPoints = {CPoint{-3.3, 5.1}, {20.7, 30.2}, {1e7, 31.0}};
        for (const CBrush& brush : brushes.getBrushes()) {
            CDrawContext context(*this, bitmap_, coverage_, 0, 0, {0, 0, kSectorPx, kSectorPx});
            context.drawPolyline(kPoints, brush, 1, color_, 0.9);
        }
    }

private:
    COffscreenSurface surface_;
    CSectorMap map_{surface_};
    CLinearBitmap bitmap_;
    CPaletteColor color_;
    std::array<std::uint8_t, kSectorPx * kSectorPx> coverage_{};
};

template <class Set>
bool load(Set& set, std::span<const std::uint8_t> bytes)
{
    CMemoryReader reader(bytes);
    return !set.load(reader);
}

// What was loaded must be writable and load again.
template <class Set>
void saveAndLoad(const Set& set)
{
    CMemoryWriteBuffer buffer;
    releaseError(set.save(buffer));
    CByteBuffer bytes;
    buffer.copyTo(bytes);
    Set again;
    if (!load(again, bytes.bytes())) {
        std::abort();
    }
}

} // namespace

void fuzzOne(std::span<const std::uint8_t> input)
{
    if (input.empty()) {
        return;
    }
    static Canvas canvas;
    const std::span<const std::uint8_t> file = input.subspan(1);
    switch (input[0] % kKinds) {
    case kImageSet: {
        CImageSet images(1.1);
        if (load(images, file)) {
            canvas.paint(images);
            saveAndLoad(images);
        }
        break;
    }
    case kFont: {
        CFont font;
        if (load(font, file)) {
            canvas.paint(font.getGlyphs());
            saveAndLoad(font);
        }
        break;
    }
    case kBrushSet: {
        CBrushSet brushes;
        if (load(brushes, file)) {
            canvas.paint(brushes);
            saveAndLoad(brushes);
        }
        break;
    }
    default: {
        CPalette palette;
        if (load(palette, file)) {
            (void)palette.findColor("Alarm", 0.7);
            saveAndLoad(palette);
        }
    }
    }
}

std::vector<std::vector<std::uint8_t>> fuzzSeeds()
{
    using test::Picture;
    std::mt19937 random(1);
    const auto seed = [](Kind kind, const test::FileBytes& file) {
        std::vector<std::uint8_t> bytes = {kind};
        bytes.insert(bytes.end(), file.bytes().begin(), file.bytes().end());
        return bytes;
    };
    const auto layer = [&](std::uint32_t bytesPerPixel) {
        return test::LayerBytes{1, bytesPerPixel, Picture::random(40, 6, random), -2, -1, 4.5};
    };
    return {seed(kImageSet, test::imageSetBytes({{"", 1, 2}}, {{1, {layer(2), layer(4)}}, {2, {layer(2)}}})),
            seed(kFont, test::fontBytes({{32, {layer(1)}}, {65, {layer(1)}}}, 14, 3, 2)),
            seed(kBrushSet, test::brushSetBytes(1.48, 3, 1.0)),
            seed(kPalette,
                 test::paletteBytes({{"Default", 1.0, 1, 2, 3}, {"Alarm|1", 0.5, 4, 5, 6}}, {{"Alarm", 2}}))};
}

} // namespace qel
