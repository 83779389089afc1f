// The pop-ups that a list is in and opens.
#pragma once

#include "CDynamicList.h"
#include "CView.h"

namespace qel {

bool isInPopup(const CView& view);
// The one that the view is in; elsewhere nothing.
CError closeOwnPopup(CView& view);

// Hands "popup-result" to the view's "result-target", or to whoever opened the pop-up, and closes that.
CError deliverPopupResult(CView& view, CAttrMap parameters);

// Opens the list behind an item beside it.
//     source   full name of the object that has the lists
//     rowY     pixels from the top of the view's text to the item
CError openSubList(CView& view, const CString& source, const CDynamicListItem& item, std::int32_t index,
                   double rowY);

} // namespace qel
