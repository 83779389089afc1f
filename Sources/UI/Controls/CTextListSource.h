// The texts of several items, from a list or written out.
#pragma once

#include "CDynamicList.h"
#include "CObject.h"

namespace qel {

// What an attribute such as "object-title-list" says: the path of a list of the tree (CDynamicList), or the
// texts themselves with a separator in between.
class CTextListSource
{
public:
    // Takes the attribute up. A list is listened to from then on: `handler` is the event handler of `owner`
    // for its changes.
    void attach(CObject& owner, const CString& text, const CString& separator, const char* handler);
    CError read(std::vector<CDynamicListItem>& out) const;
    // The list, or null if the texts are written out. Valid until the tree changes.
    CObject* findList() const { return listPath_.isEmpty() ? nullptr : owner_->findObject(listPath_); }

private:
    CObject* owner_ = nullptr;
    CString listPath_; // in full
    std::vector<CDynamicListItem> written_;
};

} // namespace qel
