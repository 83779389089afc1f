// Chooses the colours of the interface.
#pragma once

#include "CSelectorShared.h"

namespace qel {

// Tag `ui:selector-palette`. One button for each palette in "shared::pal", in the colour "PalIcon" and the
// palette's name; "palette-name" becomes its name.
class CSelectorPalette : public CSelectorShared
{
protected:
    const char* getAttributeName() const override { return "palette-name"; }
    CString getButtonValue(std::int32_t index) const override
    {
        const auto place = static_cast<std::size_t>(index);
        return place < names_.size() ? names_[place] : CString();
    }
    // Fails without palettes.
    CError countButtons(std::int32_t& out) override;
    void describeButton(std::int32_t index, CAttrMap& attributes) override;

private:
    std::vector<CString> names_;
};

} // namespace qel
