// Texts for lists and selectors.
#include "CValueList.h"

namespace qel {

void CValueList::buildClassInfo(CClassInfo& info)
{
    using Self = CValueList;
    CObject::buildClassInfo(info);
    info.bind<&Self::separator_, &Self::onListAttr>("separator-char", ";");
    info.bind<&Self::values_, &Self::onListAttr>("values", "");
    info.bind<&Self::maxCapacity_, &Self::onListAttr>("max-capacity", 0);
    info.bind<&Self::emptyValue_, &Self::onListAttr>("add-empty-value", std::nullopt);
    info.bind<&Self::isParagraph_, &Self::onListAttr>("is-paragraph", false);
    info.bind<&Self::isLineBreak_, &Self::onListAttr>("is-line-break", false);
    info.handleEvent<&Self::onUpdateValues>("update-values");
}

CError CValueList::init()
{
    QEL_TRY(CObject::init(), getFullName());
    return updateValues();
}

CError CValueList::onListAttr()
{
    return getInitState() < InitState::kAttrsApplied ? CError() : updateValues();
}

std::vector<CString> CValueList::split(const CString& text) const
{
    return text.isEmpty() || separator_.isEmpty() ? std::vector<CString>{text} : text.split(separator_[0]);
}

CError CValueList::collect(std::vector<CDynamicListItem>& out, bool&)
{
    std::vector<CString> texts;
    if (setValues_) {
        texts = *setValues_;
    } else if (!values_.isEmpty()) {
        texts = split(values_);
    }
    for (CString& text : texts) {
        const auto index = static_cast<std::int32_t>(out.size());
        out.push_back(
            {.text = std::move(text), .subListId = {}, .value = index, .isMarked = index == marked_});
    }
    return {};
}

CError CValueList::updateValues()
{
    std::vector<CDynamicListItem> items;
    bool isReady = true;
    QEL_TRY(collect(items, isReady), getFullName());
    if (!isReady) {
        return {};
    }
    if (emptyValue_) {
        items.insert(items.begin(), {.text = *emptyValue_, .subListId = {}, .value = -1});
    }
    if (maxCapacity_ > 0 && items.size() > static_cast<std::size_t>(maxCapacity_)) {
        items.resize(static_cast<std::size_t>(maxCapacity_));
    }
    if (items == items_) {
        return {};
    }
    items_ = std::move(items);
    return notify(kValuesChanged, {}, false);
}

CError CValueList::setValues(std::vector<CString> values, std::int32_t marked)
{
    setValues_ = std::move(values);
    marked_ = marked;
    return updateValues();
}

CError CValueList::getItems(const CString& listId, std::vector<CDynamicListItem>& out)
{
    if (!listId.isEmpty()) {
        QEL_FAIL(getFullName(), "@qelstr_CValueList_getItems_InvalidListId Invalid list identifier %1.",
                 listId);
    }
    out = items_;
    return {};
}

CString CValueList::getText() const
{
    CString between = separator_ + CString(" ");
    if (isParagraph_) {
        between = "\n";
    } else if (isLineBreak_) {
        between = "[BR]";
    }
    CString text;
    for (const CDynamicListItem& item : items_) {
        text += (text.isEmpty() ? CString() : between) + item.text;
    }
    return text;
}

} // namespace qel
