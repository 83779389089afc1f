// The list whose items a text view shows in place of its title.
#pragma once

#include "CDynamicList.h"
#include "CObject.h"

namespace qel {

// Part of a list view, which listens to the list by way of it. The list is another object of the tree, which
// may go and come again. Thread of the window's tree.
class CParagraphSource
{
public:
    // The event that the owner gets when the items are others: time to read().
    static constexpr const char* kUpdate = "text-source-update";

    explicit CParagraphSource(CObject& owner) : owner_(owner) {}

    // Looks for the list from now on at the path; none: there is no list. Fails where nothing is.
    CError setPath(const CString& path);
    const CString& getPath() const { return path_; }
    bool isThere() const { return list_ != nullptr; }

    // Takes the items of a list of the source. On an error there are those that it gave.
    CError read(const CString& listId);
    const std::vector<CDynamicListItem>& getItems() const { return items_; }
    // Null for an index that is not there.
    const CDynamicListItem* findItem(std::int32_t index) const;
    bool hasSubLists() const;

private:
    CObject& owner_;
    CString path_;
    CDynamicList* list_ = nullptr;
    std::vector<CDynamicListItem> items_;
};

} // namespace qel
