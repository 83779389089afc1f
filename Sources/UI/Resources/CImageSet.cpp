// An image set file.
#include "CImageSet.h"

#include "CVariantChoice.h"
#include "Trace.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// Room is made for what has arrived, not for what a damaged size promises.
constexpr std::size_t kReadStepBytes = 65536;
constexpr std::size_t kVariantSkipBytes = 32; // of a variant's head, before the size of its raster

bool isSideSound(std::int32_t side)
{
    return side >= 0 && side <= CImageSet::kMaxSidePx;
}

bool isOriginSound(std::int32_t origin)
{
    return origin >= -CImageSet::kMaxOriginPx && origin <= CImageSet::kMaxOriginPx;
}

bool isHeadSound(const CImageLayer& layer)
{
    return isSideSound(layer.width) && isSideSound(layer.height) && isSideSound(layer.rasterWidth) &&
           isSideSound(layer.rasterHeight) && isOriginSound(layer.originX) && isOriginSound(layer.originY) &&
           std::fabs(layer.advance) <= CImageSet::kMaxSidePx;
}

} // namespace

CError CImageSet::load(CInputStream& stream)
{
    clear();
    CError error = loadAll(stream);
    if (error) {
        clear();
        return reportError(std::move(error), __FILE__, __LINE__);
    }
    linkImages();
    return {};
}

CError CImageSet::loadAll(CInputStream& stream)
{
    std::uint32_t version = 0;
    QEL_TRY(stream.readU32(version), {});
    isKnownVersion_ = version == kVersion;
    if (!isKnownVersion_) {
        return {};
    }
    QEL_TRY(loadRanges(stream), {});
    std::uint32_t count = 0;
    QEL_TRY(stream.readU32(count), {});
    for (std::uint32_t i = 0; i < count; ++i) {
        QEL_TRY(loadImage(stream), {});
    }
    return {};
}

CError CImageSet::loadRanges(CInputStream& stream)
{
    std::uint32_t count = 0;
    QEL_TRY(stream.readU32(count), {});
    for (std::uint32_t i = 0; i < count; ++i) {
        NamedRange named;
        QEL_TRY(stream.readString(named.name), {});
        QEL_TRY(stream.readU32(named.range.first), {});
        QEL_TRY(stream.readU32(named.range.last), {});
        ranges_.push_back(std::move(named));
    }
    return {};
}

CError CImageSet::loadImage(CInputStream& stream)
{
    CImage image;
    QEL_TRY(stream.readU32(image.id), {});
    std::uint32_t layerCount = 0;
    QEL_TRY(stream.readU32(layerCount), {});
    for (std::uint32_t i = 0; i < layerCount; ++i) {
        if (CError error = loadLayer(stream)) {
            return reportError(std::move(error), __FILE__, __LINE__, {},
                               "@qelstr_CImageSet_load_Layer Damaged layer %1 of image %2.",
                               {CString::number(i), CString::number(image.id)});
        }
    }
    images_.push_back(image);
    layerCounts_.push_back(layerCount);
    return {};
}

CError CImageSet::loadLayer(CInputStream& stream)
{
    CImageLayer layer;
    QEL_TRY(stream.readU32(layer.colorSlot), {});
    QEL_TRY(stream.readU32(layer.bytesPerPixel), {});
    if (layer.bytesPerPixel != 1 && layer.bytesPerPixel != 2 && layer.bytesPerPixel != 4) {
        QEL_FAIL({}, "@qelstr_CImageSet_load_PixelForm No pixels have %1 bytes.", layer.bytesPerPixel);
    }
    CVariantChoice choice;
    QEL_TRY(choice.load(stream, interfaceScale_), {});
    layer.scale = choice.scale;
    for (std::uint32_t i = 0; i < choice.count; ++i) {
        if (i == choice.index) {
            QEL_TRY(loadVariant(stream, layer), {});
            continue;
        }
        std::uint32_t rasterBytes = 0;
        QEL_TRY(stream.consume(kVariantSkipBytes), {});
        QEL_TRY(stream.readU32(rasterBytes), {});
        QEL_TRY(stream.consume(rasterBytes), {});
    }
    layers_.push_back(layer);
    return {};
}

CError CImageSet::loadVariant(CInputStream& stream, CImageLayer& layer)
{
    QEL_TRY(stream.readI32(layer.width), {});
    QEL_TRY(stream.readI32(layer.height), {});
    QEL_TRY(stream.readF64(layer.advance), {});
    QEL_TRY(stream.readI32(layer.originX), {});
    QEL_TRY(stream.readI32(layer.originY), {});
    QEL_TRY(stream.readI32(layer.rasterWidth), {});
    QEL_TRY(stream.readI32(layer.rasterHeight), {});
    if (!isHeadSound(layer)) {
        QEL_FAIL({}, "@qelstr_CImageSet_load_Size Size or origin out of bounds (%1 x %2 at %3, %4).",
                 layer.rasterWidth, layer.rasterHeight, layer.originX, layer.originY);
    }
    std::uint32_t rasterBytes = 0;
    QEL_TRY(stream.readU32(rasterBytes), {});
    if (layer.rasterWidth == 0 || layer.rasterHeight == 0) {
        QEL_TRY(stream.consume(rasterBytes), {});
        rasterSizes_.push_back(0);
        return {};
    }
    QEL_TRY(loadRaster(stream, rasterBytes, layer), {});
    return {};
}

CError CImageSet::loadRaster(CInputStream& stream, std::size_t size, CImageLayer& layer)
{
    const std::size_t start = rasters_.size();
    for (std::size_t done = 0; done < size;) {
        const std::size_t step = std::min(size - done, kReadStepBytes);
        rasters_.resize(start + done + step);
        QEL_TRY(stream.read(rasters_.data() + start + done, step), {});
        done += step;
    }
    if (!CImage::isRasterSound({rasters_.data() + start, size}, layer.rasterWidth, layer.rasterHeight,
                               layer.bytesPerPixel)) {
        QEL_FAIL({}, "@qelstr_CImageSet_load_Raster The runs do not make %1 x %2 pixels.", layer.rasterWidth,
                 layer.rasterHeight);
    }
    rasterSizes_.push_back(size);
    return {};
}

// The arrays have stopped growing: now the images can point into them.
void CImageSet::linkImages()
{
    layers_.shrink_to_fit();
    rasters_.shrink_to_fit();
    std::size_t rasterStart = 0;
    for (std::size_t i = 0; i < layers_.size(); ++i) {
        layers_[i].raster = {rasters_.data() + rasterStart, rasterSizes_[i]};
        rasterStart += rasterSizes_[i];
    }
    std::size_t firstLayer = 0;
    for (std::size_t i = 0; i < images_.size(); ++i) {
        images_[i].layers = {layers_.data() + firstLayer, layerCounts_[i]};
        firstLayer += layerCounts_[i];
    }
    std::ranges::stable_sort(images_, {}, &CImage::id);
    images_.shrink_to_fit();
    layerCounts_ = {};
    rasterSizes_ = {};
}

void CImageSet::clear()
{
    isKnownVersion_ = false;
    ranges_.clear();
    images_.clear();
    layers_.clear();
    rasters_.clear();
    layerCounts_.clear();
    rasterSizes_.clear();
}

CError CImageSet::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(kVersion), {});
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(ranges_.size())), {});
    for (const NamedRange& named : ranges_) {
        QEL_TRY(stream.writeString(named.name), {});
        QEL_TRY(stream.writeU32(named.range.first), {});
        QEL_TRY(stream.writeU32(named.range.last), {});
    }
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(images_.size())), {});
    for (const CImage& image : images_) {
        QEL_TRY(stream.writeU32(image.id), {});
        QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(image.layers.size())), {});
        for (const CImageLayer& layer : image.layers) {
            QEL_TRY(saveLayer(stream, layer), {});
        }
    }
    return {};
}

CError CImageSet::saveLayer(COutputStream& stream, const CImageLayer& layer)
{
    QEL_TRY(stream.writeU32(layer.colorSlot), {});
    QEL_TRY(stream.writeU32(layer.bytesPerPixel), {});
    QEL_TRY(stream.writeU32(1), {});
    QEL_TRY(stream.writeF64(layer.scale), {});
    QEL_TRY(stream.writeI32(layer.width), {});
    QEL_TRY(stream.writeI32(layer.height), {});
    QEL_TRY(stream.writeF64(layer.advance), {});
    QEL_TRY(stream.writeI32(layer.originX), {});
    QEL_TRY(stream.writeI32(layer.originY), {});
    QEL_TRY(stream.writeI32(layer.rasterWidth), {});
    QEL_TRY(stream.writeI32(layer.rasterHeight), {});
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(layer.raster.size())), {});
    QEL_TRY(stream.write(layer.raster.data(), layer.raster.size()), {});
    return {};
}

CImageRange CImageSet::findRange(const CString& name) const
{
    const auto named = std::ranges::find(ranges_, name, &NamedRange::name);
    if (named != ranges_.end()) {
        return named->range;
    }
    if (!name.isEmpty()) {
        if (isTracing()) {
            trace(formatMessage("Range not found <%1>", {name}));
        }
        return findRange({});
    }
    return images_.empty() ? CImageRange() : CImageRange{images_.front().id, images_.back().id};
}

const CImage* CImageSet::getImage(std::uint32_t id) const
{
    const auto image = std::ranges::lower_bound(images_, id, {}, &CImage::id);
    return image != images_.end() && image->id == id ? &*image : nullptr;
}

std::size_t CImageSet::getByteCount() const
{
    return sizeof(*this) + ranges_.size() * sizeof(NamedRange) + images_.size() * sizeof(CImage) +
           layers_.size() * sizeof(CImageLayer) + rasters_.size();
}

} // namespace qel
