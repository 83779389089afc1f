// A bitmap in memory, and everything that is painted into it.
#pragma once

#include "CCheckedObject.h"
#include "CError.h"
#include "CImage.h"
#include "CPalette.h"
#include "CRect.h"

#include <memory>

namespace qel {

// Pixels of four bytes: blue, green, red and one that is always 0. Rows run top down, `pitch` bytes apart.
//
// All painting is cut to `clip` and to the bitmap, works with whole numbers and gives the same bits on every
// machine. Opacities are 0 to 1 and multiplied with that of the colour. What is painted adds to the process's
// draw counter (CDrawLoad.h). One thread at a time.
class CLinearBitmap : public CCheckedObject
{
public:
    static constexpr std::int32_t kMaxSidePx = 32767;
    // Opacities of images in whole steps; from the second on an image is written over what was there.
    static constexpr std::int32_t kFullWeight = 32768;
    static constexpr std::int32_t kPlainWeight = 32640;

    CLinearBitmap() = default;
    CLinearBitmap(const CLinearBitmap&) = delete;
    CLinearBitmap& operator=(const CLinearBitmap&) = delete;

    // New pixels, all 0; nothing happens at the same size. A side of 0 frees the memory. On error, which is a
    // lack of memory or a side beyond kMaxSidePx, the bitmap is empty.
    virtual CError resize(std::int32_t width, std::int32_t height);

    std::int32_t getWidth() const { return width_; }
    std::int32_t getHeight() const { return height_; }
    std::int32_t getPitch() const { return pitch_; }
    CPixelRect getBounds() const { return {0, 0, width_, height_}; }
    const std::uint8_t* getPixels() const { return pixels_; }
    std::uint32_t* getRow(std::int32_t y)
    {
        return reinterpret_cast<std::uint32_t*>(pixels_ + static_cast<std::ptrdiff_t>(y) * pitch_);
    }
    const std::uint32_t* getRow(std::int32_t y) const
    {
        return reinterpret_cast<const std::uint32_t*>(pixels_ + static_cast<std::ptrdiff_t>(y) * pitch_);
    }

    // --- whole bitmaps; sizes alike, but for copyFrom()

    // Sets all pixels to 0.
    void clear();
    // Takes the size of the other bitmap, too.
    CError copyFrom(const CLinearBitmap& source);
    // Copies the rectangle from the same place of `source`.
    void copyRect(const CLinearBitmap& source, const CPixelRect& rect);
    // Each channel of the rectangle goes towards `source` by `weight`, 0 to 1.
    void blendRect(const CLinearBitmap& source, const CPixelRect& rect, double weight);

    // --- painting

    // Paints an image layer with its logical corner (a glyph's pen) at (x, y).
    void blit(const CImageLayer& layer, std::int32_t x, std::int32_t y, const CPixelRect& clip,
              const CPaletteColor& color, double opacity);
    // Fills with entry 255 of the colour.
    void fillRect(const CPixelRect& rect, const CPixelRect& clip, const CPaletteColor& color, double opacity);
    // Turns each channel into its opposite.
    void invertRect(const CPixelRect& rect, const CPixelRect& clip);
    // Paints entry 255 of the colour through `coverage` (0 to 255 a pixel, rows of `pitch` bytes), whose
    // first byte belongs to the corner of `rect`, which must be within the bitmap.
    void paintCoverage(const std::uint8_t* coverage, std::int32_t pitch, const CPixelRect& rect,
                       const CPaletteColor& color, double opacity);

protected:
    // Pixels that somebody else owns; null to let go of them.
    void attach(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t pitch);

private:
    struct Free
    {
        void operator()(std::uint8_t* memory) const;
    };

    std::uint8_t* pixels_ = nullptr;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    std::int32_t pitch_ = 0; // bytes
    std::unique_ptr<std::uint8_t[], Free> memory_;
};

} // namespace qel
