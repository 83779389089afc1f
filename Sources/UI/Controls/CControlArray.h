// A row of like controls, one for each value.
#pragma once

#include "CTextListSource.h"
#include "CUIParamUpdateHandler.h"
#include "CView.h"

namespace qel {

// Tag `ui:control-array`. Makes one child from a template for each item and keeps them up to date.
//
//     object-tag            the template
//     object-count          how many; a child "ui-param-count" says it instead by its value, and without both
//                           there is one for each title
//     object-title-list     titles: path of a list, or the texts
//     object-value-list     what values of items are called, the same way
//     object-value-offset   the parameter's value is the number
//                           that an item of that list stands for,
//                           and this; 0 by default
//     separator-char        between written texts, ";" by default
//     object-color, object-text-color   "Action" and "Text" by default
//     object-state-path     from an item to the view that shows its state; by default ".button", if there is
//                           one, else the item
//     selected-object       number of the selected item; -1 (default) for none
//
// Children of the tag `ui:ui-param`: "ui-param-count"; "ui-param-selected-object", whose value is the
// selected item's, that is its number or what its title stands for in its list; "ui-param", whose elements
// are the values of the items, in this order.
//
// Attributes of an item: "object-index", "object-index-incr" (one more), "object-title", "object-color",
// "object-text-color", "object-value", "object-value-title" (the text of the value), "object-value-list" (the
// list's full path, empty without one), "object-state-path". They change while the item stands, so templates
// follow them by live references.
//
// States of the view that shows the state: "active" for the selected item, "error" for one whose value is not
// in the value list. If it is a button, a click selects the item, and where there is a value list it opens
// that: "item-list" of the button is set. Templates of other kinds run these events on the array, both with
// "object-index":
//
//     object-released      selects the item
//     object-value-picked  sets the value of the item to that of the value list's item "index"
//
// The array fires "object-selected" with "index" for its own commands after the user has selected an item.
class CControlArray : public CView, public CUIParamUpdateHandler
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Fails without an object tag.
    CError init() override;
    CError initChilds() override;
    void onChildRemoved(CObject& child) override;

    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

    std::size_t getItemCount() const { return items_.size(); }

private:
    CError attrLists();
    CError attrItems();
    CError eventListChange(const CAttrMap& parameters);
    CError eventReleased(const CAttrMap& parameters);
    CError eventValuePicked(const CAttrMap& parameters);

    bool isUp() const { return isUp_ && !isReleased(); }
    CError update();
    std::int32_t wantedCount() const;
    CError makeItem();
    CError wireItem(CView& item, std::int32_t index);
    CError describe(std::size_t index);
    CError showSelection();
    CView* stateViewOf(CView& item) const;
    CString titleOf(std::size_t index) const;
    std::int32_t valueOf(std::size_t index) const;
    // What the selected parameter's value is for an item.
    std::int32_t selectorOf(std::size_t index) const;

    CUIParam* countParam_ = nullptr;
    CUIParam* selectedParam_ = nullptr;
    CUIParam* valueParam_ = nullptr;
    CTextListSource titleSource_;
    CTextListSource valueSource_;
    std::vector<CDynamicListItem> titles_;
    std::vector<CDynamicListItem> values_;
    std::vector<CView*> items_;
    bool isUp_ = false;

    // Bound attributes.
    CString tag_;
    std::int32_t count_ = 0;
    CString titleList_;
    CString valueList_;
    std::int32_t valueOffset_ = 0;
    CString separator_;
    CString color_;
    CString textColor_;
    CString statePath_;
    std::int32_t selected_ = -1;
};

} // namespace qel
