// The line in which a text is edited.
#include "CEditBox.h"

#include "CSystemClipboard.h"
#include "CTimer.h"
#include "CViewWindow.h"
#include "EventParameters.h"
#include "SystemEvents.h"

#include <cmath>

namespace qel {

namespace {

namespace key = platform::key;

constexpr const char* kIdleTimer = "editbox-timer";
constexpr const char* kIdleTick = "editbox-tick";
constexpr double kIdleCheckSec = 1.0;

// All characters of a line in one colour.
class COneColor final : public CTextColorSource
{
public:
    explicit COneColor(const CPaletteColor& color) : color_(color) {}
    const CPaletteColor& getTextColor(std::size_t) const override { return color_; }

private:
    const CPaletteColor& color_;
};

} // namespace

void CEditBox::buildClassInfo(CClassInfo& info)
{
    using Self = CEditBox;
    CTextViewBase::buildClassInfo(info);
    info.bind<&Self::selectColor_, &Self::attrSelectColors>("paragraph-select-color", "Selection");
    info.bind<&Self::selectTextColor_, &Self::attrSelectColors>("paragraph-select-text-color",
                                                                "SelectionText");
    info.bind<&Self::isEnterAccepted_>("is-accept-enter", true);
    info.bind<&Self::isTabAccepted_>("is-accept-tab", false);
    info.bind<&Self::acceptChars_, &Self::attrRules>("accept-chars", "");
    info.bind<&Self::maxLength_, &Self::attrRules>("max-paragraph-length", 0);
    info.handleEvent<&Self::eventKeyPress>("key-press");
    info.handleEvent<&Self::eventBlur>("blur");
    info.handleEvent<&Self::eventFocusLost>("focus-lost");
    info.handleEvent<&Self::eventIdleTick>(kIdleTick);
    info.handleEvent<&Self::eventPopupClosed>("popup-closed");
    info.handleEvent<&Self::eventVirtualKeyboardPress>("virtual-keyboard-press");
}

CEditBox::CEditBox()
    : cursorTick_(*this, [this] { onCursorTick(); }), self_(std::make_shared<CEditBox*>(this))
{}

CError CEditBox::init()
{
    QEL_TRY(CTextViewBase::init(), getFullName());
    return attrSelectColors();
}

CError CEditBox::attrSelectColors()
{
    setSlotColor(kSelectSlot, selectColor_);
    setSlotColor(kSelectTextSlot, selectTextColor_);
    return {};
}

CError CEditBox::attrRules()
{
    edit_.setRules(acceptChars_, static_cast<std::size_t>(std::max(0, maxLength_)));
    return {};
}

// --- begin and end

CError CEditBox::start(CEditBoxOwner& owner, const CString& text, bool isAllSelected)
{
    owner_ = &owner;
    edit_.setText(text);
    if (isAllSelected) {
        edit_.selectAll();
    }
    noteInput();
    cursorTick_.start(getViewContext().getCursorTimer());
    QEL_TRY(onTextEdited(), getFullName());

    // In a tree without a loop nothing tells that time goes by.
    CTimer* timer = nullptr;
    const CAttrMap attributes = {{"interval", CAttrValue(kIdleCheckSec)}};
    releaseError(createChild(timer, "core:timer", kIdleTimer, false, nullptr, &attributes));
    if (timer) {
        listenObject(timer->getFullName(), "tick", kIdleTick);
    }
    CViewWindow* const window = getWindow();
    return window ? window->setKeyFocus(this, false) : CError();
}

CError CEditBox::replaceText(const CString& text)
{
    if (isEnded_ || isReleased() || text == edit_.getText()) {
        return {};
    }
    edit_.setText(text);
    edit_.selectAll();
    return onTextEdited();
}

CError CEditBox::end(CEditEnd end)
{
    if (isEnded_ || !owner_ || isReleased()) {
        return {};
    }
    isEnded_ = true;
    const CHold hold(*this);
    cursorTick_.stop();
    // Before the owner acts, which may give the focus to another box.
    CViewWindow* const window = getWindow();
    if (window && window->getKeyFocus() == this) {
        QEL_TRY(window->setKeyFocus(nullptr, false), getFullName());
    }
    return isReleased() ? CError() : owner_->onEditEnded(edit_.getText(), end);
}

CError CEditBox::eventBlur(const CAttrMap&)
{
    return end(CEditEnd::kCommit);
}

CError CEditBox::eventFocusLost(const CAttrMap&)
{
    // The window of the keyboard on the screen may take the focus when it is pressed.
    return isStateActive("popup") ? CError() : end(CEditEnd::kCommit);
}

CError CEditBox::eventPopupClosed(const CAttrMap&)
{
    CViewWindow* const window = isEnded_ ? nullptr : getWindow();
    return window ? window->setKeyFocus(this, false) : CError();
}

CError CEditBox::eventIdleTick(const CAttrMap&)
{
    const bool isLeft = owner_ && !owner_->isPointedAt();
    const bool isIdle = isLeft && CViewContext::getTimeSec() - lastInputSec_ >= kIdleSec;
    return isIdle || actsDisabled() || !getViewArea().isShown() ? end(CEditEnd::kCommit) : CError();
}

// --- keys

CError CEditBox::eventKeyPress(const CAttrMap& parameters)
{
    if (isEnded_ || !owner_) {
        return {};
    }
    noteInput();
    const auto code = static_cast<std::uint32_t>(eventNumber(parameters, "keycode"));
    const bool isCtrl = eventFlag(parameters, "is-ctrl");
    if (eventFlag(parameters, "is-character")) {
        if (code < 0x20 || code > 0xFFFF) {
            return {};
        }
        CString typed;
        typed.append(static_cast<char16_t>(code));
        edit_.insert(typed);
        return onTextEdited();
    }
    return eventFlag(parameters, "is-alt") ? CError()
                                           : pressKey(code, isCtrl, eventFlag(parameters, "is-shift"));
}

CError CEditBox::pressKey(std::uint32_t key, bool isCtrl, bool isShift)
{
    switch (key) {
    case key::kLeft:
        isCtrl ? edit_.moveWordLeft(isShift) : edit_.moveLeft(isShift);
        break;
    case key::kRight:
        isCtrl ? edit_.moveWordRight(isShift) : edit_.moveRight(isShift);
        break;
    case key::kUp:
        return owner_->onEditStep(1.0, isShift, isCtrl);
    case key::kDown:
        return owner_->onEditStep(-1.0, isShift, isCtrl);
    case key::kHome:
        edit_.moveTo(0, isShift);
        break;
    case key::kEnd:
        edit_.moveTo(edit_.getText().length(), isShift);
        break;
    case key::kBackspace:
        edit_.eraseLeft(isCtrl);
        return onTextEdited();
    case key::kDelete:
        if (isShift) {
            return pressShortcut('X', false);
        }
        edit_.eraseRight(isCtrl);
        return onTextEdited();
    case key::kInsert:
        return isCtrl || isShift ? pressShortcut(isCtrl ? 'C' : 'V', false) : CError();
    case key::kEnter:
        return isEnterAccepted_ ? end(CEditEnd::kCommit) : CError();
    case key::kEscape:
        return end(CEditEnd::kCancel);
    case key::kTab:
        if (isTabAccepted_) {
            return end(isShift ? CEditEnd::kTabBackward : CEditEnd::kTabForward);
        }
        return {};
    default:
        return isCtrl ? pressShortcut(key, isShift) : CError();
    }
    onCaretMoved();
    return {};
}

CError CEditBox::pressShortcut(std::uint32_t key, bool isShift)
{
    if (key == 'Z' || key == 'Y') {
        key == 'Y' || isShift ? edit_.redo() : edit_.undo();
        return onTextEdited();
    }
    if (isShift) {
        return {};
    }
    switch (key) {
    case 'A':
        edit_.selectAll();
        onCaretMoved();
        return {};
    case 'C':
        copy();
        return {};
    case 'X':
        if (!edit_.hasSelection()) {
            return {};
        }
        copy();
        edit_.eraseLeft(false);
        return onTextEdited();
    case 'V':
        paste();
        return {};
    default:
        return {};
    }
}

void CEditBox::copy()
{
    CViewWindow* const window = getWindow();
    platform::CSystemClipboard* const clipboard = window ? window->getClipboard() : nullptr;
    if (clipboard && edit_.hasSelection()) {
        clipboard->setText(edit_.getSelectedText().toUtf8());
    }
}

void CEditBox::paste()
{
    CViewWindow* const window = getWindow();
    platform::CSystemClipboard* const clipboard = window ? window->getClipboard() : nullptr;
    if (!clipboard) {
        return;
    }
    clipboard->requestText([weak = std::weak_ptr(self_)](const std::optional<std::string>& text) {
        const std::shared_ptr<CEditBox*> box = weak.lock();
        if (box && text && !(*box)->isReleased() && !(*box)->isEnded_) {
            (*box)->edit_.insert(CTextEdit::fromClipboard(*text));
            if (CError error = (*box)->onTextEdited()) {
                traceError(error);
            }
        }
    });
}

CError CEditBox::eventVirtualKeyboardPress(const CAttrMap& parameters)
{
    const CString title = eventText(parameters, "key");
    CObject* const caps = findObject(eventText(parameters, "caps-button"));
    const bool isCaps = caps && caps != this && caps->getAttrBool("is-active");
    CAttrMap pressed = {{"is-shift", CAttrValue(isCaps)}, {"is-ctrl", CAttrValue(false)}};
    std::uint32_t code = 0;
    if (title == "CAPS") {
        return caps && caps != this ? caps->setAttribute("is-active", CAttrValue(!isCaps), true) : CError();
    }
    if (title == "Cancel") {
        code = key::kEscape;
    } else if (title == "Bkspace") {
        code = key::kBackspace;
    } else if (title == "Enter") {
        code = key::kEnter;
    } else if (title.length() == 1) {
        const bool isCapital = title[0] >= u'A' && title[0] <= u'Z';
        code = isCapital && !isCaps ? title[0] + 0x20U : title[0];
        pressed["is-character"] = CAttrValue(true);
    } else {
        return {};
    }
    pressed["keycode"] = CAttrValue(static_cast<std::int32_t>(code));
    return receiveEvent("key-press", pressed);
}

// --- what changes

CError CEditBox::onTextEdited()
{
    QEL_TRY(refreshText(), getFullName());
    onCaretMoved();
    return {};
}

void CEditBox::onCaretMoved()
{
    isCaretShown_ = true;
    isCaretFresh_ = true;
    keepCaretInView();
    markLook();
}

void CEditBox::onCursorTick()
{
    if (!std::exchange(isCaretFresh_, false)) {
        isCaretShown_ = !isCaretShown_;
        const double height = getText().getFont().getLineHeight();
        markPart({positionX(edit_.getCaret()), getTextTop(), caretWidth(), height});
    }
}

// --- places

double CEditBox::caretWidth() const
{
    return std::max(1, roundToPixel(getInterfaceScale()));
}

double CEditBox::positionX(std::size_t position) const
{
    const std::vector<CTextLine>& lines = getText().getLines();
    if (lines.empty()) {
        return getTextBox().x;
    }
    const std::vector<CTextGlyph>& glyphs = getText().getGlyphs();
    return getLineX(lines[0]) + (position < glyphs.size() ? glyphs[position].pen : lines[0].width);
}

std::size_t CEditBox::positionAt(double x) const
{
    std::size_t position = 0;
    while (position < edit_.getText().length() &&
           x >= (positionX(position) + positionX(position + 1)) * 0.5) {
        ++position;
    }
    return position;
}

void CEditBox::keepCaretInView()
{
    const std::vector<CTextLine>& lines = getText().getLines();
    if (lines.empty()) {
        return;
    }
    // As if nothing were moved. The caret needs room behind the last character, too.
    const double begin = getLineX(lines[0]) + shiftPx_ - getTextBox().x;
    const double caret = positionX(edit_.getCaret()) + shiftPx_ - getTextBox().x;
    const double room = std::max(0.0, getTextBox().width - caretWidth());
    const double most = std::max(0.0, std::ceil(begin + lines[0].width - room));
    const double least = std::max(0.0, std::ceil(caret - room));
    shiftPx_ = std::min(std::clamp(shiftPx_, least, std::max(least, std::floor(caret))), most);
}

void CEditBox::onTextLaidOut()
{
    keepCaretInView();
}

void CEditBox::updateClips()
{
    CTextViewBase::updateClips();
    const CRect& box = getTextBox();
    setClip(kTextClip, box.movedBy(getArea().x, getArea().y));
}

// --- pointer

void CEditBox::placeCaret(const CPoint& point)
{
    edit_.moveTo(positionAt(point.x - getArea().x), false);
    onCaretMoved();
}

CError CEditBox::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewBase::onMousePress(parameters), getFullName());
    CViewWindow* const window = isReleased() || isEnded_ ? nullptr : getWindow();
    if (!window) {
        return {};
    }
    noteInput();
    const std::size_t position = positionAt(eventNumber(parameters, "x") - getArea().x);
    isDragging_ = !eventFlag(parameters, "is-double-click");
    if (!isDragging_) {
        edit_.selectWordAt(position);
    } else {
        edit_.moveTo(position, eventFlag(parameters, "is-shift"));
    }
    onCaretMoved();
    return window->setKeyFocus(this, false); // the host may have taken the keyboard meanwhile
}

CError CEditBox::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewBase::onMouseMove(parameters), getFullName());
    noteInput();
    if (!isReleased() && !isEnded_ && isDragging_) {
        edit_.moveTo(positionAt(eventNumber(parameters, "x") - getArea().x), true);
        onCaretMoved();
    }
    return {};
}

CError CEditBox::onMouseRelease(const CAttrMap& parameters)
{
    isDragging_ = false;
    return CTextViewBase::onMouseRelease(parameters);
}

CError CEditBox::onMouseCancel(const CAttrMap& parameters)
{
    isDragging_ = false;
    return CTextViewBase::onMouseCancel(parameters);
}

// --- drawing

void CEditBox::draw(CDrawContext& context)
{
    if (getText().getLines().empty()) {
        return;
    }
    const CTextLine& line = getText().getLines()[0];
    const CPoint point{getLineX(line), getTextTop()};
    const double height = line.height;
    const std::size_t begin = edit_.getSelectionBegin();
    const std::size_t end = edit_.getSelectionEnd();
    const COneColor plain(getTextSlotColor(kTextSlot));
    if (edit_.hasSelection()) {
        const double left = positionX(begin);
        context.drawFilledRect(getTextSlotColor(kSelectSlot), {left, point.y, positionX(end) - left, height},
                               kTextClip, 1.0);
    }
    const COneColor selected(getTextSlotColor(kSelectTextSlot));
    getText().drawGlyphs(context, line, line.begin, begin, point, kTextClip, plain);
    getText().drawGlyphs(context, line, begin, end, point, kTextClip, selected);
    getText().drawGlyphs(context, line, end, line.end, point, kTextClip, plain);
    if (isCaretShown_ && !isEnded_) {
        context.drawFilledRect(getTextSlotColor(kTextSlot),
                               {positionX(edit_.getCaret()), point.y, caretWidth(), height}, kTextClip, 1.0);
    }
}

} // namespace qel
