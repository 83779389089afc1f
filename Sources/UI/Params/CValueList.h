// Texts for lists and selectors.
#pragma once

#include "CDynamicList.h"
#include "CObject.h"

namespace qel {

// Tag `ui:value-list-manual`.
//
//     values            the texts, with separator-char in between
//     separator-char    ";" by default
//     max-capacity      how many items there are at most; 0 (default) for no limit
//     add-empty-value   text of an item in front of the others that stands for none of them; its value is -1
//     is-paragraph      getText() puts each item on a line of its own
//     is-line-break     the same by markup, within one paragraph
//
// Raises "values-changed" when an item is another one. Takes "update-values", which reads them anew.
class CValueList : public CObject, public CDynamicList
{
public:
    static constexpr const char* kValuesChanged = "values-changed";

    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    const std::vector<CDynamicListItem>& getItems() const { return items_; }
    // One list: fails for an id.
    CError getItems(const CString& listId, std::vector<CDynamicListItem>& out) override;
    // All items in one text, with the separator in between if nothing else is given.
    CString getText() const;
    // From now on these texts, in place of the attribute "values"; the item at `marked` is the one in use.
    CError setValues(std::vector<CString> values, std::int32_t marked = -1);

    virtual CError updateValues();

protected:
    // What the list holds, without regard to the attributes above but for the separator. `outIsReady` false:
    // it is not known yet, and stays as it is.
    virtual CError collect(std::vector<CDynamicListItem>& out, bool& outIsReady);
    // An attribute has changed: reads the items anew, once the object stands.
    CError onListAttr();
    std::vector<CString> split(const CString& text) const;

private:
    CError onUpdateValues(const CAttrMap&) { return updateValues(); }

    std::vector<CDynamicListItem> items_;
    std::optional<std::vector<CString>> setValues_;
    std::int32_t marked_ = -1;

    // Bound attributes.
    CString values_;
    CString separator_;
    std::int32_t maxCapacity_ = 0;
    std::optional<CString> emptyValue_;
    bool isParagraph_ = false;
    bool isLineBreak_ = false;
};

} // namespace qel
