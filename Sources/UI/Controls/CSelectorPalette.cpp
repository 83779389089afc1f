// Chooses the colours of the interface.
#include "CSelectorPalette.h"

#include "CPaletteObject.h"

namespace qel {

CError CSelectorPalette::countButtons(std::int32_t& out)
{
    const CPaletteObject* palettes = nullptr;
    QEL_TRY(require(palettes, "shared::pal",
                    "@qelstr_CSelectorPalette_countButtons_NoPalettes Unable to locate palette object '%1'."),
            getFullName());
    names_ = palettes->getPaletteNames();
    out = static_cast<std::int32_t>(names_.size());
    return {};
}

void CSelectorPalette::describeButton(std::int32_t index, CAttrMap& attributes)
{
    attributes["color"] = CAttrValue("PalIcon" + getButtonValue(index));
}

} // namespace qel
