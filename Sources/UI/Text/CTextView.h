// The text element of the interface.
#pragma once

#include "CTextViewBase.h"

namespace qel {

// Tag `ui:textview`: a label, or a text of several paragraphs.
class CTextView : public CTextViewBase
{
public:
    static void buildClassInfo(CClassInfo& info);
};

} // namespace qel
