// Chooses the size of the interface.
#pragma once

#include "CSelectorShared.h"

namespace qel {

// Tag `ui:selector-scale`. Three buttons for "scale": 0.8, 1.0 and 1.25. Windows keep the scale that they
// were opened with.
class CSelectorScale : public CSelectorShared
{
protected:
    const char* getAttributeName() const override { return "scale"; }
    CString getButtonValue(std::int32_t index) const override
    {
        static constexpr const char* kScales[] = {"0.8", "1.0", "1.25"};
        return index >= 0 && index < 3 ? kScales[index] : "";
    }
};

} // namespace qel
