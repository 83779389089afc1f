// A font file.
#include "CFont.h"

namespace qel {

CError CFont::load(CInputStream& stream)
{
    clearMeasures();
    if (CError error = loadAll(stream)) {
        clearMeasures();
        return reportError(std::move(error), __FILE__, __LINE__);
    }
    return {};
}

CError CFont::loadAll(CInputStream& stream)
{
    std::uint32_t version = 0;
    QEL_TRY(stream.readU32(version), {});
    if (version != kVersion) {
        return {};
    }
    QEL_TRY(glyphs_.load(stream), {});
    // Where glyphs of an unknown version end, nobody can tell.
    if (!glyphs_.isKnownVersion()) {
        return {};
    }
    QEL_TRY(stream.readU32(lineHeight_), {});
    QEL_TRY(stream.readU32(ascentGap_), {});
    QEL_TRY(stream.readU32(descentGap_), {});
    constexpr std::uint32_t kMaxPx = CImageSet::kMaxSidePx;
    if (lineHeight_ > kMaxPx || ascentGap_ > kMaxPx || descentGap_ > kMaxPx) {
        QEL_FAIL({}, "@qelstr_CFont_load_Measures Line height or gap out of bounds (%1, %2, %3).",
                 lineHeight_, ascentGap_, descentGap_);
    }
    return {};
}

CError CFont::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(kVersion), {});
    QEL_TRY(glyphs_.save(stream), {});
    QEL_TRY(stream.writeU32(lineHeight_), {});
    QEL_TRY(stream.writeU32(ascentGap_), {});
    QEL_TRY(stream.writeU32(descentGap_), {});
    return {};
}

void CFont::clearMeasures()
{
    lineHeight_ = 0;
    ascentGap_ = 0;
    descentGap_ = 0;
}

} // namespace qel
