// An image: layers of run-length coded pixels.
#include "CImage.h"

#include <algorithm>

namespace qel {

namespace {

unsigned kindOf(std::uint8_t alpha)
{
    return alpha < CImage::kFirstVisibleAlpha  ? CImageLayer::kTransparentRun
           : alpha < CImage::kFirstOpaqueAlpha ? CImageLayer::kAlphaRun
                                               : CImageLayer::kOpaqueRun;
}

void putRunCode(std::vector<std::uint8_t>& out, unsigned kind, std::int32_t count)
{
    const unsigned code = static_cast<unsigned>(count) << CImageLayer::kRunCountShift | kind;
    if (count <= CImageLayer::kMaxShortRun) {
        out.push_back(static_cast<std::uint8_t>(code));
        return;
    }
    out.push_back(static_cast<std::uint8_t>(code | CImageLayer::kLongRunFlag));
    out.push_back(static_cast<std::uint8_t>(code >> 8));
}

// Of a four-byte pixel the bytes that a form stores: value or colour first, the alpha last.
void putPixel(std::vector<std::uint8_t>& out, const std::uint8_t* pixel, std::uint32_t bytesPerPixel,
              unsigned kind)
{
    out.insert(out.end(), pixel, pixel + bytesPerPixel - 1);
    if (kind == CImageLayer::kAlphaRun) {
        out.push_back(pixel[3]);
    }
}

// True if anything in the row can be seen.
bool putRow(std::vector<std::uint8_t>& out, const std::uint8_t* pixels, std::int32_t width,
            std::uint32_t bytesPerPixel)
{
    bool isVisible = false;
    for (std::int32_t x = 0; x < width;) {
        const unsigned kind = kindOf(pixels[4 * x + 3]);
        const std::int32_t limit = std::min(width, x + CImageLayer::kMaxRun);
        std::int32_t end = x + 1;
        while (end < limit && kindOf(pixels[4 * end + 3]) == kind) {
            ++end;
        }
        putRunCode(out, kind, end - x);
        if (kind != CImageLayer::kTransparentRun) {
            isVisible = true;
            for (; x < end; ++x) {
                putPixel(out, pixels + 4 * x, bytesPerPixel, kind);
            }
        }
        x = end;
    }
    return isVisible;
}

// A row's runs lie within the raster and cover exactly `width` pixels.
bool isRowSound(std::span<const std::uint8_t> runs, std::int32_t width, std::uint32_t bytesPerPixel)
{
    std::size_t at = 0;
    while (width > 0) {
        if (at == runs.size()) {
            return false;
        }
        unsigned code = runs[at++];
        if ((code & CImageLayer::kLongRunFlag) != 0) {
            if (at == runs.size()) {
                return false;
            }
            code |= static_cast<unsigned>(runs[at++]) << 8;
        }
        const unsigned kind = code & CImageLayer::kRunKindMask;
        const auto count = static_cast<std::int32_t>(code >> CImageLayer::kRunCountShift);
        // An empty run would draw nothing, but a file of them could keep the check busy for long.
        if (kind > CImageLayer::kOpaqueRun || count == 0 || count > width) {
            return false;
        }
        width -= count;
        const std::size_t bytes = kind == CImageLayer::kTransparentRun ? 0
                                  : kind == CImageLayer::kAlphaRun     ? bytesPerPixel
                                                                       : bytesPerPixel - 1;
        if (static_cast<std::size_t>(count) * bytes > runs.size() - at) {
            return false;
        }
        at += static_cast<std::size_t>(count) * bytes;
    }
    return true;
}

} // namespace

std::vector<std::uint8_t> CImage::buildRaster(const std::uint8_t* pixels, std::int32_t width,
                                              std::int32_t height, std::ptrdiff_t pitchBytes,
                                              std::uint32_t bytesPerPixel)
{
    std::vector<std::uint8_t> out(2 + 4 * static_cast<std::size_t>(height));
    out[0] = static_cast<std::uint8_t>(height);
    out[1] = static_cast<std::uint8_t>(height >> 8);
    for (std::int32_t y = 0; y < height; ++y) {
        const std::size_t offset = out.size();
        if (!putRow(out, pixels + y * pitchBytes, width, bytesPerPixel)) {
            continue;
        }
        for (std::size_t i = 0; i < 4; ++i) {
            out[2 + 4 * static_cast<std::size_t>(y) + i] = static_cast<std::uint8_t>(offset >> (8 * i));
        }
    }
    return out;
}

bool CImage::isRasterSound(std::span<const std::uint8_t> raster, std::int32_t rasterWidth,
                           std::int32_t rasterHeight, std::uint32_t bytesPerPixel)
{
    if (rasterWidth < 0 || rasterHeight < 0 ||
        (bytesPerPixel != 1 && bytesPerPixel != 2 && bytesPerPixel != 4)) {
        return false;
    }
    const std::size_t table = 2 + 4 * static_cast<std::size_t>(rasterHeight);
    if (raster.size() < table || (raster[0] | (raster[1] << 8)) != rasterHeight) {
        return false;
    }
    for (std::int32_t y = 0; y < rasterHeight; ++y) {
        const std::uint8_t* const entry = raster.data() + 2 + 4 * static_cast<std::size_t>(y);
        const std::size_t offset = entry[0] | (std::size_t{entry[1]} << 8) | (std::size_t{entry[2]} << 16) |
                                   (std::size_t{entry[3]} << 24);
        if (offset == 0) {
            continue;
        }
        if (offset < table || offset > raster.size() ||
            !isRowSound(raster.subspan(offset), rasterWidth, bytesPerPixel)) {
            return false;
        }
    }
    return true;
}

} // namespace qel
