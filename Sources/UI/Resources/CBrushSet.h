// A brush set file.
#pragma once

#include "CDataSet.h"

#include <span>
#include <vector>

namespace qel {

// A soft round stamp of coverage (0 to 255), drawn for every fractional position of the pen.
struct CBrush
{
    double width = 0.0;             // nominal width of the line, pixels at an interface scale of 1
    std::uint32_t oversampling = 0; // 2^oversampling pen positions a pixel and axis
    double scale = 1.0;             // the interface scale that the stamps were made for
    std::uint32_t size = 0;         // side of a stamp, pixels
    double radius = 0.0;            // of what is covered, soft edge included, pixels
    std::span<const std::uint8_t> table;

    std::uint32_t positionsPerPixel() const { return 1U << oversampling; }
    // The size x size stamp, by rows, for the fraction (fractionX, fractionY) / positionsPerPixel(): its
    // centre lies radius + fraction pixels from the stamp's left and top edges.
    const std::uint8_t* stamp(std::uint32_t fractionX, std::uint32_t fractionY) const
    {
        return table.data() + (fractionY * positionsPerPixel() + fractionX) * std::size_t{size} * size;
    }
};

// Brushes by line width. Of each brush's variants the one nearest to the interface scale is kept.
class CBrushSet : public CDataSet
{
public:
    static constexpr std::uint32_t kMaxOversampling = 6;
    static constexpr std::uint32_t kMaxStampPx = 64;

    explicit CBrushSet(double interfaceScale = 1.0) : interfaceScale_(interfaceScale) {}

    CError load(CInputStream& stream) override;
    CError save(COutputStream& stream) const override;

    std::span<const CBrush> getBrushes() const { return brushes_; }
    // The brush whose nominal width is nearest, the first of equals, or null if the set is empty.
    const CBrush* findBrush(double width) const;
    std::size_t getByteCount() const { return tables_.size() + brushes_.size() * sizeof(CBrush); }

private:
    CError loadAll(CInputStream& stream);
    CError loadBrush(CInputStream& stream);
    CError loadVariant(CInputStream& stream, CBrush& brush, bool isKept);
    static std::size_t tableSize(const CBrush& brush);
    void clear();

    double interfaceScale_;
    std::vector<CBrush> brushes_;
    std::vector<std::uint8_t> tables_; // of all brushes
};

} // namespace qel
