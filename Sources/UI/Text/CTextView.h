// The text element of the interface.
#pragma once

#include "CEditBox.h"
#include "CTextViewList.h"

namespace qel {

// Tag `ui:textview`: a label, a text of several paragraphs, a list, and on demand an edit box for one line.
//
//     is-read-only               there is never an edit box
//     is-editbox-on-click        a click opens it; in a list, for the item clicked
//     is-editbox-on-singleclick  a click that is not the first of a double click; in a list, one on the item
//                                that is selected already
//     is-editbox-on-dblclick     a double click
//     is-select-all-on-focus     all of the text is selected then
//     is-accept-enter, is-accept-tab, accept-chars, max-paragraph-length
//                                rules of the edit (CEditBox.h)
//     tab-group                  Tab opens the next edit box among the views of the window in this group
//     editbox-can-rename-event, editbox-can-rename-target
//                                who is asked before a box opens: the event has "source" (the full name of
//                                this view) and the "index", "list-id", "text" and "value" of the paragraph;
//                                the target refuses by setting "is-editbox-refused" of the source
//     editbox-inner-border       of the box; without it that of this view
//     editbox-placement, editbox-readout-placement (or readout-placement)
//                                "match" by default; the latter where there is a child "readout" to match
//     is-editbox-full            the box has the whole width, for placements other than "match"
//     editbox-empty-value        in place of an empty text
//     is-virtual-keyboard-allowed, is-virtual-keyboard-alphabet, virtual-keyboard-minus-char
//                                the keyboard on the screen that opens with the box, if the global setting
//                                "show-virtual-keyboard" is on: with letters or without
//
// The box is a child "temp-editbox" from the template "ui:editbox-popup", a frame with a "ui:editbox" in it.
// The keyboard is the box's pop-up, from "ui:virtual-keyboard-alphadigit" or "ui:virtual-keyboard-digit", and
// has "owner-window", the path of the box, and "virtual-keyboard-minus-char". When the edit has ended, the
// events "paragraph-text-changed" (for commands and for who listens to the view) and "editbox-text-changed"
// tell of it: "text", "is-cancelled", and the "index" in a list. In a list the text changes when its source
// does, elsewhere it is the title from then on.
//
// The right button on a text that can be edited opens the menu "ui:label-copy-paste" with "owner-label", the
// path of this view, whose events "copy" and "paste" it takes. The event "change-key-focus" opens the box.
class CTextView : public CTextViewList, protected CEditBoxOwner
{
public:
    CTextView();

    static void buildClassInfo(CClassInfo& info);

    void release() override;

    virtual CError eventChangeKeyFocus(const CAttrMap& parameters);
    virtual CError eventCopy(const CAttrMap& parameters);
    virtual CError eventPaste(const CAttrMap& parameters);

    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseReleaseR(const CAttrMap& parameters) override;

    // --- the edit box

    // Neither read-only nor disabled.
    bool isEditable() const { return !isReadOnly_ && !actsDisabled() && !isReleased(); }
    bool isEditing() const { return editFrame_ != nullptr; }
    // For a paragraph of a list, or the title. Does nothing where it may not or is open already.
    CError openEditBox(std::int32_t paragraph = kNone);

protected:
    // --- for subclasses

    // The text that an edit begins with.
    virtual CString getEditText(std::int32_t paragraph) const;
    // The user has entered a text: by default it is the title, unless this is a list.
    virtual CError onTextCommitted(const CString& text, std::int32_t paragraph);
    // The user has given the edit up.
    virtual CError onEditCancelled() { return {}; }
    // The keys up and down in the edit box.
    CError onEditStep(double, bool, bool) override { return {}; }
    // Replaces what is in the edit box, if it is open.
    CError setEditText(const CString& text) { return editBox_ ? editBox_->replaceText(text) : CError(); }

    bool isParagraphShown(std::size_t paragraph) const override;

private:
    struct Choice
    {
        std::int32_t paragraph = kNone;
        std::optional<CPoint> point; // where the caret goes
        bool isAllSelected = false;
    };

    CError onEditEnded(const CString& text, CEditEnd end) override;
    bool isPointedAt() const override { return isStateActive("hover"); }
    CError open(const Choice& choice);
    CError askTarget(const Choice& choice, bool& isRefused);
    CAttrMap frameAttributes(const Choice& choice) const;
    void placeAtParagraph(std::int32_t paragraph, CAttrMap& attributes) const;
    CError configure(CEditBox& box) const;
    CError openKeyboard(CEditBox& box);
    CError commit(const CString& text, bool isCancelled, std::int32_t paragraph);
    CError editNextInGroup(bool isForward);
    bool opensBox() const { return isOnClick_ || isOnSingleClick_ || isOnDoubleClick_; }
    void onDelayTick();

    CView* editFrame_ = nullptr;          // while a text is edited
    CEditBox* editBox_ = nullptr;         // in it
    std::int32_t edited_ = kNone;         // the paragraph
    bool wasIntercepting_ = false;        // before, and let nobody else have the pointer
    bool isClickBegun_ = false;           // by a press that was no double click
    std::int32_t selectedBefore_ = kNone; // when the click began
    CTickSubscription delayTick_;         // until a click is known to be a single one
    double delayEndSec_ = 0.0;
    Choice delayed_;
    // What waits for the clipboard looks here whether the view is still there.
    std::shared_ptr<CTextView*> self_;

    // Bound attributes.
    bool isReadOnly_ = false;
    bool isOnClick_ = false;
    bool isOnSingleClick_ = false;
    bool isOnDoubleClick_ = false;
};

} // namespace qel
