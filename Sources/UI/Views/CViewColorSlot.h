// A further colour of a view.
#pragma once

#include "CObject.h"

namespace qel {

class CViewBase;

// Tag `ui:view-color-slot`, a child of a view: gives slot "slot-index" the colour "color".
class CViewColorSlot : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails if the parent is no view.
    CError init() override;

private:
    CError attrColor();

    CViewBase* view_ = nullptr;

    // Bound attributes.
    std::int32_t slotIndex_ = 0;
    CString color_;
};

} // namespace qel
