// A text view that shows the items of a list.
#pragma once

#include "CParagraphSource.h"
#include "CTextViewBase.h"

namespace qel {

// What a list shows: paragraphs, which are those of the title or the items of a list, whose texts are shown
// as they are, without regard to markup. What the user does with them is CTextViewList.
//
//     is-paragraph-hoverable, paragraph-hover-color
//                             a strip behind the paragraph under the pointer
//     is-paragraph-selectable, paragraph-select-color, paragraph-select-text-color
//                             the selected paragraph has a strip and a colour of its own
//     selected-paragraph      the number of the selected one, from 0; -1 (default) for none
//     paragraph-mark-color    of a bar in front of the item that is in use
//     text-source             path of a CDynamicList whose items take the place of the title
//     is-text-source-forced   a title that is set later does not take their place again
//     dynamic-list-parent-id  the list of the source that is shown, by default its first one
//     text-source-single-value
//                             only the selected item is shown
//     max-item-count          the view asks for the height of so many items at most; a scrollable view with a
//                             bar shows the others
//     no-items-title          in place of an empty list, "<no items>" by default
//     allow-no-paragraphs     an empty list is an empty text instead
//     active-paragraph-prefix in front of the text of the selected item
//     is-tablet-mode, tablet-paragraph-height
//                             paragraphs are at least so high, pixels, for fingers
//
// An item with a sub-list has an arrow.
class CTextViewItems : public CTextViewBase
{
public:
    static constexpr std::int32_t kNone = -1;
    static constexpr const char* kSelected = "selected-paragraph";

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

    const CParagraphSource& getSource() const { return source_; }
    bool hasSource() const { return source_.isThere(); }
    CString getListId() const;
    bool isSelectable() const { return isSelectable_; }
    bool isHoverable() const { return isHoverable_; }
    std::int32_t getMaxItemCount() const { return maxItemCount_; }
    // Null for a paragraph of the title.
    const CDynamicListItem* findItem(std::int32_t index) const;
    bool isChoosable(std::int32_t index) const;
    // The paragraph under the pointer of an event, or kNone.
    std::int32_t findParagraphAt(const CAttrMap& parameters) const;
    // The one under the pointer, or under the cursor of the keys.
    std::int32_t getHovered() const { return hovered_; }
    void hover(std::int32_t index);
    CError scrollTo(std::int32_t index);

private:
    bool takeColor(const char* attribute, std::size_t slot);
    CError findSource();
    CError readSource();
    bool isListShown() const { return source_.isThere() && isSourceShown_; }
    void drawMark(CDrawContext& context, std::size_t paragraph);
    void markParagraph(std::int32_t index);
    CError scrollToSelected();

    CParagraphSource source_{*this};
    const CImage* arrow_ = nullptr; // beside items with a sub-list
    bool isSourceShown_ = false;    // rather than the title
    bool isScrollDue_ = false;      // to the selected item
    bool hasHoverColor_ = false;
    bool hasSelectColor_ = false;
    bool hasSelectTextColor_ = false;
    bool hasMarkColor_ = false;
    std::int32_t hovered_ = kNone;

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
};

} // namespace qel
