// A text view that is a list.
#pragma once

#include "CParagraphSource.h"
#include "CTextViewBase.h"

namespace qel {

// The middle of the text views: paragraphs to choose from. They are those of the title or the items of a
// list, whose texts are shown as they are, without regard to markup.
//
//     is-paragraph-hoverable, paragraph-hover-color
//                             a strip behind the paragraph under the pointer
//     is-paragraph-selectable, paragraph-select-color, paragraph-select-text-color
//                             a click selects; the selected paragraph has a strip and a colour of its own
//     selected-paragraph      the number of the selected one, from 0; -1 (default) for none
//     paragraph-mark-color    of a bar in front of the item that is in use
//     text-source             path of a CDynamicList whose items take the place of the title
//     is-text-source-forced   a title that is set later does not take their place again
//     dynamic-list-parent-id  the list of the source that is shown, by default its first one
//     dynamic-list-parent-item
//                             the item of the list above that this one belongs to
//     text-source-single-value
//                             only the selected item is shown
//     max-item-count          the view asks for the height of so many items at most; a scrollable view with a
//                             bar shows the others
//     no-items-title          in place of an empty list, "<no items>" by default
//     allow-no-paragraphs     an empty list is an empty text instead
//     active-paragraph-prefix in front of the text of the selected item
//     is-tablet-mode, tablet-paragraph-height
//                             paragraphs are at least so high, pixels, for fingers
//     is-selected-paragraph-click-cancels
//                             a click on the selected item closes the pop-up without a result
//     is-right-click-selects  the right button selects, too
//     result-target           path of who gets the event "popup-result"; by default whoever opened the
//                             pop-up that the view is in
//     result-target-index-attr
//                             an attribute of the target that is set to the number of the item
//     result-target-redirect-attr
//                             an attribute of the target with the path of another one, from there
//     original-opener         who opened the first of a chain of pop-up lists
//
// An item with a sub-list has an arrow; a rest of the pointer ("auto-click") or a click opens the sub-list
// beside it, as a pop-up from "ui:window-app-popup-list" with "item-list", "dynamic-list-parent-id",
// "dynamic-list-parent-item", "selected-paragraph", "original-opener", "popup-text-alignment" and whatever
// attributes "popup-..." this view has. Its result goes on as if it came from here.
//
// Events of the view's own name, for its commands and for who listens to it, with the parameters "index",
// "list-id", "text" and "value": "selected-paragraph-changed" and "paragraph-dbl-clicked". "popup-result" has
// the same. A view that is focusable takes the key focus when it is pressed: arrow keys move, Enter chooses,
// Escape closes.
class CTextViewList : public CTextViewBase
{
public:
    static constexpr std::int32_t kNone = -1;
    static constexpr const char* kSelected = "selected-paragraph";
    static constexpr const char* kDoubleClicked = "paragraph-dbl-clicked";

    static void buildClassInfo(CClassInfo& info);

    // Fails without the list that "text-source" names.
    CError initChilds() override;

    // --- handlers of attributes and events

    virtual CError attrIsParagraphHoverable();
    virtual CError attrIsParagraphSelectable();
    virtual CError attrParagraphHoverColor();
    virtual CError attrParagraphSelectColor();
    virtual CError attrParagraphSelectTextColor();
    virtual CError attrParagraphMarkColor();
    virtual CError attrSelectedParagraph();
    virtual CError attrTextSource();
    CError attrTitle() override;
    virtual CError eventTextSourceUpdate(const CAttrMap& parameters);
    virtual CError eventAutoClick(const CAttrMap& parameters);
    virtual CError eventKeyPress(const CAttrMap& parameters);
    virtual CError eventPopupClosed(const CAttrMap& parameters);
    CError eventPopupResult(const CAttrMap& parameters) override;

    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseReleaseR(const CAttrMap& parameters) override;

    // --- the list

    std::int32_t getSelectedParagraph() const { return selected_; }
    // The paragraph as it was given, with its markup; empty beyond the end.
    CString getParagraphText(std::int32_t index) const;
    // Number of paragraphs that can be chosen; 0 for an empty list.
    std::int32_t getItemCount() const;
    // Selects and scrolls to it; nobody is told.
    CError selectParagraph(std::int32_t index);

protected:
    // --- what texts are made of
    void fillText(CTextWrapper& text) override;
    double getMaxCompactHeight() const override;
    double getExtraWidth() const override;
    std::int32_t getParagraphHeight() const override;
    void onTextLaidOut() override;
    const CPaletteColor& getParagraphColor(std::size_t paragraph) override;
    void drawBehindText(CDrawContext& context) override;

    // --- for subclasses

    bool hasSource() const { return source_.isThere(); }
    // The paragraph under the pointer of an event, or kNone.
    std::int32_t findParagraphAt(const CAttrMap& parameters) const;
    // Fires an event for the commands here and raises it for whoever listens to the view.
    CError raiseEvent(const char* name, const CAttrMap& parameters);
    // "index", "list-id", "text" and "value" of a paragraph.
    CAttrMap paragraphParameters(std::int32_t index) const;
    // As a click does.
    CError chooseParagraph(std::int32_t index);

private:
    CError findSource();
    CError readSource();
    CString getListId() const;
    bool isListShown() const { return source_.isThere() && isSourceShown_; }
    const CDynamicListItem* findItem(std::int32_t index) const;
    bool isChoosable(std::int32_t index) const;
    void hover(std::int32_t index);
    void drawMark(CDrawContext& context, std::size_t paragraph);
    void markParagraph(std::int32_t index);
    CError openSubList(std::int32_t index);
    CError moveCursor(std::int32_t by);
    CError scrollToSelected();
    CError scrollTo(std::int32_t index);

    CParagraphSource source_{*this};
    const CImage* arrow_ = nullptr; // beside items with a sub-list
    bool isSourceShown_ = false;    // rather than the title
    bool isScrollDue_ = false;      // to the selected item
    bool hasHoverColor_ = false;
    bool hasSelectColor_ = false;
    bool hasSelectTextColor_ = false;
    bool hasMarkColor_ = false;
    std::int32_t hovered_ = kNone;    // under the pointer or the keys' cursor
    std::int32_t pressed_ = kNone;    // where a click began
    std::int32_t openedItem_ = kNone; // whose sub-list is open

    // Bound attributes.
    bool isHoverable_ = false;
    bool isSelectable_ = false;
    std::int32_t selected_ = kNone;
    bool isSourceForced_ = false;
    bool isSingleValue_ = false;
    std::int32_t maxItemCount_ = 0;
    bool isEmptyAllowed_ = false;
    bool isTabletMode_ = false;
    double tabletParagraphHeight_ = 0.0;
    bool isSelectedClickCancelling_ = false;
    bool isRightClickSelecting_ = false;
};

} // namespace qel
