// The line in which a text is edited.
#pragma once

#include "CTextEdit.h"
#include "CTextViewBase.h"

namespace qel {

class CEditBox;

// How an edit ends.
enum class CEditEnd
{
    kCommit,
    kCancel,
    kTabForward, // commits, too
    kTabBackward
};

// Whose text is edited.
class CEditBoxOwner
{
public:
    virtual ~CEditBoxOwner() = default;

    // The user is done; called once. The owner releases the box, here or later.
    virtual CError onEditEnded(const CString& text, CEditEnd end) = 0;
    // The key up (1) or down (-1).
    virtual CError onEditStep(double notches, bool isShift, bool isCtrl) = 0;
    // The pointer is on it: the user is still there.
    virtual bool isPointedAt() const = 0;
};

// Tag `ui:editbox`, within the frame of "ui:editbox-popup" that a CTextView makes. One line that moves along
// with the caret. The text is shown as it is, without regard to markup. What the font lacks draws nothing and
// is kept.
//
// A text view starts it; from then on it has the key focus. Enter, Tab and the loss of the focus commit,
// Escape cancels. It also commits when nobody has typed or pointed for a while: the keys belong to the host,
// and to whoever forgot that a box is open.
//
//     paragraph-select-color, paragraph-select-text-color
//                                 of the selection: "Selection" and "SelectionText" by default
//     is-accept-enter             false: Enter does nothing. True by default
//     is-accept-tab               true: Tab commits and moves on
//     accept-chars                the characters that may be typed; empty (default) for all
//     max-paragraph-length        the longest text; 0 (default) for no limit
//
// Takes "virtual-keyboard-press": "key" is the title of a key of the keyboard on the screen, a character or
// "Enter", "Cancel", "Bkspace", "CAPS"; "caps-button" is the path of the key for capitals, which shows by its
// "is-active" whether they are on.
class CEditBox : public CTextViewBase
{
public:
    // Without a key or a movement of the pointer.
    static constexpr double kIdleSec = 30.0;

    CEditBox();

    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    // Begins to edit; once. The owner lives as long as the box.
    CError start(CEditBoxOwner& owner, const CString& text, bool isAllSelected);
    // Puts the caret to a point of the window.
    void placeCaret(const CPoint& point);
    // Ends the edit if it has not ended yet. The box may be gone afterwards.
    CError end(CEditEnd end);
    const CTextEdit& getEdit() const { return edit_; }
    // Another text in place of what has been typed, all of it selected.
    CError replaceText(const CString& text);

    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;

    void draw(CDrawContext& context) override;

protected:
    void updateClips() override;
    void fillText(CTextWrapper& text) override { text.setPlain(edit_.getText()); }
    bool isShortening() const override { return false; }
    double getTextShiftX() const override { return shiftPx_; }
    void onTextLaidOut() override;

private:
    CError attrRules();
    CError attrSelectColors();
    CError eventKeyPress(const CAttrMap& parameters);
    CError eventBlur(const CAttrMap& parameters);
    CError eventFocusLost(const CAttrMap& parameters);
    // The keyboard on the screen has closed: the keys come from the other one again.
    CError eventPopupClosed(const CAttrMap& parameters);
    CError eventIdleTick(const CAttrMap& parameters);
    CError eventVirtualKeyboardPress(const CAttrMap& parameters);

    CError pressKey(std::uint32_t key, bool isCtrl, bool isShift);
    CError pressShortcut(std::uint32_t key, bool isShift);
    void copy();
    void paste();
    // The text has changed, or only the caret or the selection.
    CError onTextEdited();
    void onCaretMoved();
    void onCursorTick();
    void keepCaretInView();
    double positionX(std::size_t position) const;
    std::size_t positionAt(double x) const;
    double caretWidth() const;
    void noteInput() { lastInputSec_ = CViewContext::getTimeSec(); }

    CEditBoxOwner* owner_ = nullptr;
    CTextEdit edit_;
    bool isEnded_ = false;
    double shiftPx_ = 0.0;    // how far the line is moved to the left
    bool isDragging_ = false; // selecting with the button held
    bool isCaretShown_ = true;
    bool isCaretFresh_ = false; // it has just moved, and stays visible
    double lastInputSec_ = 0.0;
    CTickSubscription cursorTick_;
    // What waits for the clipboard looks here whether the box is still there.
    std::shared_ptr<CEditBox*> self_;

    // Bound attributes.
    CString selectColor_;
    CString selectTextColor_;
    bool isEnterAccepted_ = true;
    bool isTabAccepted_ = false;
    CString acceptChars_;
    std::int32_t maxLength_ = 0;
};

} // namespace qel
