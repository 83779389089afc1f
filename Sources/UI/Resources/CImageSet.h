// An image set file.
#pragma once

#include "CDataSet.h"
#include "CImage.h"

#include <vector>

namespace qel {

// Ids of the images that belong together under a name, both ends included. There may be gaps.
struct CImageRange
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

// Images by id and ranges of ids by name. Of each layer's variants only the one for the scale nearest to the
// interface scale is kept (of two equally near the first), still run-length coded; the others are skipped in
// the stream.
class CImageSet : public CDataSet
{
public:
    // Sides and distances beyond these are taken for damage, so that sums of a few of them fit 32 bits.
    static constexpr std::int32_t kMaxSidePx = 4096;
    static constexpr std::int32_t kMaxOriginPx = 65536;

    explicit CImageSet(double interfaceScale = 1.0) : interfaceScale_(interfaceScale) {}

    CError load(CInputStream& stream) override;
    CError save(COutputStream& stream) const override;

    // The range of this name. An unknown name is traced and gives the default range: the one without a name,
    // or all images if there is none.
    CImageRange findRange(const CString& name) const;
    // The image, or null if there is none of this id: then there is nothing to draw.
    const CImage* getImage(std::uint32_t id) const;
    // All images, by ascending id.
    std::span<const CImage> getImages() const { return images_; }
    // False if the file was of a version that we do not know.
    bool isKnownVersion() const { return isKnownVersion_; }
    double getInterfaceScale() const { return interfaceScale_; }
    // What the set holds in memory.
    std::size_t getByteCount() const;

private:
    struct NamedRange
    {
        CString name;
        CImageRange range;
    };

    CError loadAll(CInputStream& stream);
    CError loadRanges(CInputStream& stream);
    CError loadImage(CInputStream& stream);
    CError loadLayer(CInputStream& stream);
    CError loadVariant(CInputStream& stream, CImageLayer& layer);
    CError loadRaster(CInputStream& stream, std::size_t size, CImageLayer& layer);
    void linkImages();
    static CError saveLayer(COutputStream& stream, const CImageLayer& layer);
    void clear();

    double interfaceScale_;
    bool isKnownVersion_ = false;
    std::vector<NamedRange> ranges_;
    std::vector<CImage> images_;
    std::vector<CImageLayer> layers_;      // of all images
    std::vector<std::uint8_t> rasters_;    // of all layers
    std::vector<std::size_t> layerCounts_; // by image, while loading
    std::vector<std::size_t> rasterSizes_; // by layer, while loading
};

} // namespace qel
