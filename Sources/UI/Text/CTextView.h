// The text element of the interface.
#pragma once

#include "CTextViewList.h"

namespace qel {

// Tag `ui:textview`: a label, or a text of several paragraphs.
class CTextView : public CTextViewList
{
public:
    static void buildClassInfo(CClassInfo& info);
};

} // namespace qel
