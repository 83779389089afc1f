// Chooses the oversampling that "Auto" stands for.
#pragma once

#include "CSelectorShared.h"

namespace qel {

// Tag `ui:selector-oversampling`. The attribute "oversampling-level" becomes the number of the button: each
// doubles the rate.
class CSelectorOversampling : public CSelectorShared
{
protected:
    const char* getAttributeName() const override { return "oversampling-level"; }
    CString getButtonValue(std::int32_t index) const override { return CString::number(index); }
};

} // namespace qel
