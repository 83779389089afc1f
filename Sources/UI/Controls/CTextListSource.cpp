// The texts of several items, from a list or written out.
#include "CTextListSource.h"

namespace qel {

namespace {

constexpr const char* kValuesChanged = "values-changed";

} // namespace

void CTextListSource::attach(CObject& owner, const CString& text, const CString& separator,
                             const char* handler)
{
    if (owner_ && !listPath_.isEmpty()) {
        owner.unlistenObject(listPath_, kValuesChanged, handler);
    }
    owner_ = &owner;
    listPath_.clear();
    written_.clear();
    if (text.isEmpty()) {
        return;
    }
    CObject* const list = owner.findObject(text);
    if (dynamic_cast<CDynamicList*>(list)) {
        listPath_ = list->getFullName();
        owner.listenObject(listPath_, kValuesChanged, handler);
        return;
    }
    const std::vector<CString> texts =
        separator.isEmpty() ? std::vector<CString>{text} : text.split(separator[0]);
    for (const CString& item : texts) {
        const auto value = static_cast<std::int32_t>(written_.size());
        written_.push_back({.text = item, .subListId = {}, .value = value});
    }
}

CError CTextListSource::read(std::vector<CDynamicListItem>& out) const
{
    out = written_;
    auto* const list = dynamic_cast<CDynamicList*>(findList());
    return list ? list->getItems({}, out) : CError();
}

} // namespace qel
