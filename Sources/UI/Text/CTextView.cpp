// The text element of the interface.
#include "CTextView.h"

namespace qel {

void CTextView::buildClassInfo(CClassInfo& info)
{
    CTextViewList::buildClassInfo(info);
}

} // namespace qel
