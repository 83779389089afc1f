// Run-length coded rasters, and what is done to a raster before it is coded.
#include "GraphicsCompiler/RasterCode.h"

#include "GraphicsCompiler/ByteStreams.h"

#include <algorithm>

namespace qel::tools {

namespace {

enum class RunKind
{
    kTransparent,
    kBlended,
    kOpaque,
};

// Bits 0 and 1 are the kind, bit 2 tells that a second byte follows, the count begins at bit 3.
constexpr unsigned kKindMask = 3;
constexpr unsigned kLongRun = 4;
constexpr unsigned kCountShift = 3;
constexpr int kShortRunEnd = 32;
constexpr int kLongestRun = 8191;

RunKind kindOf(std::uint8_t alpha)
{
    return alpha < kFirstVisibleAlpha   ? RunKind::kTransparent
           : alpha >= kFirstOpaqueAlpha ? RunKind::kOpaque
                                        : RunKind::kBlended;
}

void writeRunCode(CByteWriter& writer, RunKind kind, int count)
{
    const unsigned code = static_cast<unsigned>(count) << kCountShift | static_cast<unsigned>(kind);
    if (count < kShortRunEnd) {
        writer.putU8(static_cast<std::uint8_t>(code));
    } else {
        writer.putU16(static_cast<std::uint16_t>(code | kLongRun));
    }
}

void writeRun(CByteWriter& writer, const CRaster& raster, int y, int first, int end, RunKind kind)
{
    writeRunCode(writer, kind, end - first);
    if (kind == RunKind::kTransparent) {
        return;
    }
    const int stored = raster.bytesPerPixel - (kind == RunKind::kOpaque ? 1 : 0);
    for (int x = first; x < end; ++x) {
        writer.put({raster.at(x, y), static_cast<std::size_t>(stored)});
    }
}

// True if anything in the row can be seen.
bool writeRow(CByteWriter& writer, const CRaster& raster, int y)
{
    bool isVisible = false;
    for (int x = 0; x < raster.width;) {
        const RunKind kind = kindOf(raster.alphaAt(x, y));
        const int last = std::min(raster.width, x + kLongestRun);
        int end = x + 1;
        while (end < last && kindOf(raster.alphaAt(end, y)) == kind) {
            ++end;
        }
        writeRun(writer, raster, y, x, end, kind);
        isVisible |= kind != RunKind::kTransparent;
        x = end;
    }
    return isVisible;
}

void readRun(CByteReader& reader, CRaster& raster, int& x, int y)
{
    unsigned code = reader.getU8();
    if (code & kLongRun) {
        code |= static_cast<unsigned>(reader.getU8()) << 8;
    }
    const unsigned kind = code & kKindMask;
    const int count = static_cast<int>(code >> kCountShift);
    if (kind > static_cast<unsigned>(RunKind::kOpaque)) {
        reader.fail("run of the unknown kind " + std::to_string(kind));
    }
    if (count == 0 || count > raster.width - x) {
        reader.fail("run of " + std::to_string(count) + " pixels where " + std::to_string(raster.width - x) +
                    " are left of the row");
    }
    const int end = x + count;
    if (kind == static_cast<unsigned>(RunKind::kTransparent)) {
        x = end;
        return;
    }
    const bool isOpaque = kind == static_cast<unsigned>(RunKind::kOpaque);
    const auto stored = static_cast<std::size_t>(raster.bytesPerPixel - (isOpaque ? 1 : 0));
    for (; x < end; ++x) {
        std::ranges::copy(reader.get(stored), raster.at(x, y));
        if (isOpaque) {
            raster.at(x, y)[raster.bytesPerPixel - 1] = 255;
        }
    }
}

} // namespace

std::vector<std::uint8_t> encodeRaster(const CRaster& raster)
{
    CByteWriter writer;
    writer.putU16(static_cast<std::uint16_t>(raster.height));
    const std::size_t table = writer.size();
    for (int y = 0; y < raster.height; ++y) {
        writer.putU32(0);
    }
    for (int y = 0; y < raster.height; ++y) {
        const auto start = static_cast<std::uint32_t>(writer.size());
        if (writeRow(writer, raster, y)) {
            writer.setU32(table + 4 * static_cast<std::size_t>(y), start);
        }
    }
    return writer.take();
}

CRaster decodeRaster(std::span<const std::uint8_t> code, int width, int height, int bytesPerPixel)
{
    CByteReader reader(code);
    if (reader.getU16() != height) {
        reader.fail("the raster's row count is not its height");
    }
    std::vector<std::uint32_t> offsets(static_cast<std::size_t>(height));
    for (std::uint32_t& offset : offsets) {
        offset = reader.getU32();
    }
    const std::size_t runs = reader.position();
    CRaster raster(width, height, bytesPerPixel);
    for (int y = 0; y < height; ++y) {
        const std::uint32_t offset = offsets[static_cast<std::size_t>(y)];
        if (offset == 0) {
            continue;
        }
        if (offset < runs) {
            reader.fail("row " + std::to_string(y) + " starts in the row table");
        }
        reader.seek(offset);
        for (int x = 0; x < width;) {
            readRun(reader, raster, x, y);
        }
    }
    return raster;
}

void trimMargins(CImageVariant& variant)
{
    const CRaster& raster = variant.raster;
    int left = raster.width;
    int right = 0;
    int top = raster.height;
    int bottom = 0;
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width; ++x) {
            if (raster.alphaAt(x, y) >= kFirstVisibleAlpha) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
            }
        }
    }
    if (right == 0) {
        variant.originX = 0;
        variant.originY = 0;
        variant.raster = CRaster(0, 0, raster.bytesPerPixel);
        return;
    }
    CRaster trimmed(right - left, bottom - top, raster.bytesPerPixel);
    for (int y = top; y < bottom; ++y) {
        std::copy_n(raster.at(left, y), trimmed.width * raster.bytesPerPixel, trimmed.at(0, y - top));
    }
    variant.originX += left;
    variant.originY += top;
    variant.raster = std::move(trimmed);
}

} // namespace qel::tools
