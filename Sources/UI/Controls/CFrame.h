// A panel, a bar, a pit: anything with a border.
#pragma once

#include "CFramedView.h"

namespace qel {

// Tag `ui:frame`.
//
//     has-borders       true (default): the eight pieces of a border from the present image range, with
//                       nothing inside; false: filled with the colour of slot 0
//     is-fixed-frame    the first image of the range as it is, in the top left corner
class CFrame : public CFramedView
{
public:
    static void buildClassInfo(CClassInfo& info);

    void draw(CDrawContext& context) override;

private:
    CError attrLook();

    // Bound attributes.
    bool hasBorders_ = true;
    bool isFixedFrame_ = false;
};

} // namespace qel
