// A text view that is a list.
#pragma once

#include "CTextViewItems.h"

namespace qel {

// The middle of the text views: paragraphs to choose from, by a click if they are selectable.
//
//     is-selected-paragraph-click-cancels
//                             a click on the selected item closes the pop-up without a result
//     is-right-click-selects  the right button selects, too
//     dynamic-list-parent-item
//                             the item of the list above that this one belongs to
//     result-target           path of who gets the event "popup-result"; by default whoever opened the
//                             pop-up that the view is in
//     result-target-index-attr
//                             an attribute of the target that is set to the number of the item
//     result-target-redirect-attr
//                             an attribute of the target with the path of another one, from there
//     original-opener         who opened the first of a chain of pop-up lists
//
// A rest of the pointer ("auto-click") on an item with a sub-list, or a click, opens the sub-list beside it,
// as a pop-up from "ui:window-app-popup-list" with "item-list", "dynamic-list-parent-id",
// "dynamic-list-parent-item", "selected-paragraph", "original-opener", "popup-text-alignment" and whatever
// attributes "popup-..." this view has. Its result goes on as if it came from here.
//
// Events of the view's own name, for its commands and for who listens to it, with the parameters "index",
// "list-id", "text" and "value": "selected-paragraph-changed" and "paragraph-dbl-clicked". "popup-result" has
// the same. A view that is focusable takes the key focus when it is pressed: arrow keys move, Enter chooses,
// Escape closes.
class CTextViewList : public CTextViewItems
{
public:
    static constexpr const char* kDoubleClicked = "paragraph-dbl-clicked";

    static void buildClassInfo(CClassInfo& info);

    // --- handlers of events

    virtual CError eventAutoClick(const CAttrMap& parameters);
    virtual CError eventKeyPress(const CAttrMap& parameters);
    virtual CError eventPopupClosed(const CAttrMap& parameters);
    CError eventPopupResult(const CAttrMap& parameters) override;

    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseReleaseR(const CAttrMap& parameters) override;

protected:
    // --- for subclasses

    // Fires an event for the commands here and raises it for whoever listens to the view.
    CError raiseEvent(const char* name, const CAttrMap& parameters);
    // "index", "list-id", "text" and "value" of a paragraph.
    CAttrMap paragraphParameters(std::int32_t index) const;
    // As a click does.
    CError chooseParagraph(std::int32_t index);

private:
    CError openSubList(std::int32_t index);
    CError moveCursor(std::int32_t by);

    std::int32_t pressed_ = kNone;    // where a click began
    std::int32_t openedItem_ = kNone; // whose sub-list is open

    // Bound attributes.
    bool isSelectedClickCancelling_ = false;
    bool isRightClickSelecting_ = false;
};

} // namespace qel
