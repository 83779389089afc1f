// The channels of the group that is shown.
#pragma once

#include "CDynamicList.h"
#include "CFramedText.h"
#include "CTextViewAutoScroll.h"

namespace qel {

// Tag `ui:group-label`. One line with the labels of the inputs that are routed to the selected group, in a
// frame if the view has images for one. A long line moves under the pointer.
//
//     audio-routing-labels   path of the list of the labels (CDynamicList), "ui.routing-labels" by default
class CGroupLabel : public CFramedText<CTextViewAutoScroll>
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails without the list.
    CError init() override;

private:
    CError eventLabelsChange(const CAttrMap& parameters);

    // Bound attributes.
    CString labels_;
};

} // namespace qel
