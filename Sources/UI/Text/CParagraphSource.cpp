// The list whose items a text view shows in place of its title.
#include "CParagraphSource.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kValuesChanged = "values-changed";

} // namespace

CError CParagraphSource::setPath(const CString& path)
{
    if (!path_.isEmpty()) {
        owner_.unlistenObject(path_, kValuesChanged, kUpdate);
    }
    path_ = path;
    items_.clear();
    list_ = path.isEmpty() ? nullptr : dynamic_cast<CDynamicList*>(owner_.findObject(path));
    if (path.isEmpty()) {
        return {};
    }
    if (!list_) {
        QEL_FAIL(owner_.getFullName(),
                 "@qelstr_CTextView_initChilds_NoTextSource Unable to find text source.");
    }
    owner_.listenObject(path, kValuesChanged, kUpdate);
    return {};
}

CError CParagraphSource::read(const CString& listId)
{
    items_.clear();
    list_ = dynamic_cast<CDynamicList*>(owner_.findObject(path_));
    return list_ ? list_->getItems(listId, items_) : CError();
}

const CDynamicListItem* CParagraphSource::findItem(std::int32_t index) const
{
    const bool isInside = index >= 0 && static_cast<std::size_t>(index) < items_.size();
    return isInside ? &items_[static_cast<std::size_t>(index)] : nullptr;
}

bool CParagraphSource::hasSubLists() const
{
    return std::ranges::any_of(items_,
                               [](const CDynamicListItem& item) { return !item.subListId.isEmpty(); });
}

} // namespace qel
