// A brush set file.
#include "CBrushSet.h"

#include "CVariantChoice.h"

#include <algorithm>
#include <cmath>

namespace qel {

CError CBrushSet::load(CInputStream& stream)
{
    clear();
    if (CError error = loadAll(stream)) {
        clear();
        return reportError(std::move(error), __FILE__, __LINE__);
    }
    tables_.shrink_to_fit();
    std::size_t start = 0;
    for (CBrush& brush : brushes_) {
        const std::size_t size = tableSize(brush);
        brush.table = {tables_.data() + start, size};
        start += size;
    }
    return {};
}

CError CBrushSet::loadAll(CInputStream& stream)
{
    std::uint32_t version = 0;
    QEL_TRY(stream.readU32(version), {});
    if (version != kVersion) {
        return {};
    }
    std::uint32_t count = 0;
    QEL_TRY(stream.readU32(count), {});
    for (std::uint32_t i = 0; i < count; ++i) {
        if (CError error = loadBrush(stream)) {
            return reportError(std::move(error), __FILE__, __LINE__, {},
                               "@qelstr_CBrushSet_load_Brush Damaged brush %1.", {CString::number(i)});
        }
    }
    return {};
}

CError CBrushSet::loadBrush(CInputStream& stream)
{
    CBrush brush;
    QEL_TRY(stream.readF64(brush.width), {});
    QEL_TRY(stream.readU32(brush.oversampling), {});
    if (!(brush.width >= 0.0 && brush.width <= kMaxStampPx) || brush.oversampling > kMaxOversampling) {
        QEL_FAIL({}, "@qelstr_CBrushSet_load_Head Width or oversampling out of bounds.");
    }
    CVariantChoice choice;
    QEL_TRY(choice.load(stream, interfaceScale_), {});
    brush.scale = choice.scale;
    for (std::uint32_t i = 0; i < choice.count; ++i) {
        QEL_TRY(loadVariant(stream, brush, i == choice.index), {});
    }
    brushes_.push_back(brush);
    return {};
}

CError CBrushSet::loadVariant(CInputStream& stream, CBrush& brush, bool isKept)
{
    CBrush variant = brush;
    std::uint32_t tableBytes = 0;
    QEL_TRY(stream.readU32(variant.size), {});
    QEL_TRY(stream.readF64(variant.radius), {});
    QEL_TRY(stream.readU32(tableBytes), {});
    if (!isKept) {
        QEL_TRY(stream.consume(tableBytes), {});
        return {};
    }
    if (variant.size > kMaxStampPx || !(variant.radius >= 0.0 && variant.radius <= kMaxStampPx) ||
        tableBytes != tableSize(variant)) {
        QEL_FAIL({}, "@qelstr_CBrushSet_load_Table A table of %1 bytes does not hold stamps of %2 pixels.",
                 tableBytes, variant.size);
    }
    brush = variant;
    // At most kMaxStampPx^2 << 2 * kMaxOversampling: 16 MiB, and only what the stream holds is kept.
    constexpr std::size_t kStepBytes = 65536;
    const std::size_t start = tables_.size();
    for (std::size_t done = 0; done < tableBytes;) {
        const std::size_t step = std::min(tableBytes - done, kStepBytes);
        tables_.resize(start + done + step);
        QEL_TRY(stream.read(tables_.data() + start + done, step), {});
        done += step;
    }
    return {};
}

std::size_t CBrushSet::tableSize(const CBrush& brush)
{
    return (std::size_t{brush.size} * brush.size) << (2 * brush.oversampling);
}

void CBrushSet::clear()
{
    brushes_.clear();
    tables_.clear();
}

CError CBrushSet::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(kVersion), {});
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(brushes_.size())), {});
    for (const CBrush& brush : brushes_) {
        QEL_TRY(stream.writeF64(brush.width), {});
        QEL_TRY(stream.writeU32(brush.oversampling), {});
        QEL_TRY(stream.writeU32(1), {});
        QEL_TRY(stream.writeF64(brush.scale), {});
        QEL_TRY(stream.writeU32(brush.size), {});
        QEL_TRY(stream.writeF64(brush.radius), {});
        QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(brush.table.size())), {});
        QEL_TRY(stream.write(brush.table.data(), brush.table.size()), {});
    }
    return {};
}

const CBrush* CBrushSet::findBrush(double width) const
{
    const CBrush* nearest = nullptr;
    for (const CBrush& brush : brushes_) {
        if (!nearest || std::fabs(brush.width - width) < std::fabs(nearest->width - width)) {
            nearest = &brush;
        }
    }
    return nearest;
}

} // namespace qel
