// What lists on the screen show.
#pragma once

#include "CError.h"

#include <cstdint>
#include <vector>

namespace qel {

struct CDynamicListItem
{
    CString text;
    CString subListId; // of the list that opens beside the item; empty: none
    bool isEnabled = true;
    // What the text stands for: the value of a state, the index of a channel or group.
    std::int32_t value = 0;
    // It is the one in use, whatever is selected.
    bool isMarked = false;

    bool operator==(const CDynamicListItem&) const = default;
};

// Implemented by objects of the tree that have texts for lists and selectors. Whenever what getItems() gives
// has changed, the object raises the event "values-changed" in its own name. Window's thread.
class CDynamicList
{
public:
    virtual ~CDynamicList() = default;

    // The items of a list, in `out`; the empty id is the list that everything starts with. Fails for an id
    // that no item gave.
    virtual CError getItems(const CString& listId, std::vector<CDynamicListItem>& out) = 0;
};

} // namespace qel
