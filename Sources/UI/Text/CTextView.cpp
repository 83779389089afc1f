// The text element of the interface.
#include "CTextView.h"

#include "CGlobalSettings.h"
#include "CSystemClipboard.h"
#include "CViewWindow.h"
#include "EventParameters.h"
#include "LiteralText.h"
#include "NumberSyntax.h"

namespace qel {

namespace {

constexpr const char* kBoxTemplate = "ui:editbox-popup";
constexpr const char* kBoxName = "temp-editbox";
constexpr const char* kRefused = "is-editbox-refused";
constexpr const char* kAllowChilds = "is-intercepting-allow-childs";
constexpr const char* kTextChanged = "paragraph-text-changed";
constexpr const char* kBoxTextChanged = "editbox-text-changed";
constexpr const char* kChangeFocus = "change-key-focus";
constexpr const char* kCopyPasteMenu = "ui:label-copy-paste";
constexpr const char* kGlobalSettings = "ui.global-settings";

// Attributes whose text is read when a box opens, and not kept a second time: few texts are edited.
constexpr const char* kAcceptChars = "accept-chars";
constexpr const char* kMaxLength = "max-paragraph-length";
constexpr const char* kAcceptEnter = "is-accept-enter";
constexpr const char* kAcceptTab = "is-accept-tab";
constexpr const char* kTabGroup = "tab-group";
constexpr const char* kInnerBorder = "inner-border";
constexpr const char* kBoxInnerBorder = "editbox-inner-border";

// A second click comes within this time or is none, as on most desktops.
constexpr double kDoubleClickSec = 0.5;

// What the frame of the box has from its owner, if the owner has it.
constexpr const char* kFrameCopies[] = {
    "accept-chars", "font-name",      "is-accept-tab", "is-dynamic", "max-paragraph-length",
    "spread",       "text-alignment", "unclip-level",  "z-index"};

CEditBox* findBox(CObject& object)
{
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        CObject& child = *object.getChild(i);
        auto* const box = dynamic_cast<CEditBox*>(&child);
        if (CEditBox* const found = box ? box : findBox(child)) {
            return found;
        }
    }
    return nullptr;
}

void collectTexts(CObject& object, std::vector<CTextView*>& out)
{
    if (auto* const text = dynamic_cast<CTextView*>(&object)) {
        out.push_back(text);
    }
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        collectTexts(*object.getChild(i), out);
    }
}

} // namespace

void CTextView::buildClassInfo(CClassInfo& info)
{
    using Self = CTextView;
    CTextViewList::buildClassInfo(info);
    info.bind<&Self::isReadOnly_>("is-read-only", false);
    info.bind<&Self::isOnClick_>("is-editbox-on-click", false);
    info.bind<&Self::isOnSingleClick_>("is-editbox-on-singleclick", false);
    info.bind<&Self::isOnDoubleClick_>("is-editbox-on-dblclick", false);
    info.handleEvent<&Self::eventChangeKeyFocus>(kChangeFocus);
    info.handleEvent<&Self::eventCopy>("copy");
    info.handleEvent<&Self::eventPaste>("paste");
}

CTextView::CTextView()
    : delayTick_(*this, [this] { onDelayTick(); }), self_(std::make_shared<CTextView*>(this))
{}

void CTextView::release()
{
    delayTick_.stop();
    CTextViewList::release();
}

// --- pointer

CError CTextView::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    delayTick_.stop();
    selectedBefore_ = getSelectedParagraph();
    isClickBegun_ = !eventFlag(parameters, "is-double-click");
    QEL_TRY(CTextViewList::onMousePress(parameters), getFullName());
    if (isReleased() || isClickBegun_ || !isOnDoubleClick_) {
        return {};
    }
    const std::int32_t paragraph = hasSource() ? findParagraphAt(parameters) : kNone;
    return hasSource() && paragraph == kNone ? CError() : openEditBox(paragraph);
}

CError CTextView::onMouseRelease(const CAttrMap& parameters)
{
    const CHold hold(*this);
    const bool isClick = std::exchange(isClickBegun_, false);
    QEL_TRY(CTextViewList::onMouseRelease(parameters), getFullName());
    if (isReleased() || !isClick || !(isOnClick_ || isOnSingleClick_)) {
        return {};
    }
    Choice choice;
    choice.paragraph = hasSource() ? findParagraphAt(parameters) : kNone;
    choice.point = CPoint{eventNumber(parameters, "x"), eventNumber(parameters, "y")};
    if (hasSource() && choice.paragraph == kNone) {
        return {};
    }
    if (isOnClick_) {
        return open(choice);
    }
    if (choice.paragraph == selectedBefore_ || !hasSource()) {
        delayed_ = choice;
        delayEndSec_ = CViewContext::getTimeSec() + kDoubleClickSec;
        delayTick_.start(getViewContext().getTimer());
    }
    return {};
}

void CTextView::onDelayTick()
{
    if (CViewContext::getTimeSec() < delayEndSec_) {
        return;
    }
    delayTick_.stop();
    if (CError error = open(delayed_)) {
        traceError(error);
    }
}

CError CTextView::onMouseReleaseR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewList::onMouseReleaseR(parameters), getFullName());
    if (!isEditable() || !opensBox() || hasSource() || !hasTemplate(kCopyPasteMenu)) {
        return {};
    }
    CAttrMap menu;
    menu["tag"] = CAttrValue(kCopyPasteMenu);
    menu["window-alignment"] = CAttrValue("cursor");
    menu["is-popup-toggle-always-create"] = CAttrValue(true);
    menu["popup-owner-label"] = CAttrValue(getFullName());
    return eventPopupToggle(menu);
}

// --- copy and paste without a box

CError CTextView::eventCopy(const CAttrMap&)
{
    CViewWindow* const window = getWindow();
    platform::CSystemClipboard* const clipboard = window ? window->getClipboard() : nullptr;
    if (clipboard) {
        clipboard->setText(getEditText(kNone).toUtf8());
    }
    return {};
}

CError CTextView::eventPaste(const CAttrMap&)
{
    CViewWindow* const window = getWindow();
    platform::CSystemClipboard* const clipboard = window ? window->getClipboard() : nullptr;
    if (!clipboard || !isEditable()) {
        return {};
    }
    clipboard->requestText([weak = std::weak_ptr(self_)](const std::optional<std::string>& text) {
        const std::shared_ptr<CTextView*> view = weak.lock();
        if (!view || !text || !(*view)->isEditable() || (*view)->isEditing()) {
            return;
        }
        CTextEdit edit;
        edit.setRules((*view)->getAttrString(kAcceptChars),
                      static_cast<std::size_t>(std::max(0, (*view)->getAttrInt(kMaxLength))));
        edit.insert(CTextEdit::fromClipboard(*text));
        if (!edit.getText().isEmpty()) {
            if (CError error = (*view)->commit(edit.getText(), false, kNone)) {
                traceError(error);
            }
        }
    });
    return {};
}

// --- opening the box

CError CTextView::eventChangeKeyFocus(const CAttrMap& parameters)
{
    Choice choice;
    choice.isAllSelected = eventFlag(parameters, "is-tab");
    return open(choice);
}

CError CTextView::openEditBox(std::int32_t paragraph)
{
    Choice choice;
    choice.paragraph = paragraph;
    return open(choice);
}

CError CTextView::askTarget(const Choice& choice, bool& isRefused)
{
    isRefused = false;
    const CString event = getAttrString("editbox-can-rename-event");
    if (event.isEmpty()) {
        return {};
    }
    const CString path = getAttrString("editbox-can-rename-target");
    CObject* const target = path.isEmpty() ? this : findObject(path);
    if (!target) {
        QEL_FAIL(getFullName(), "@qelstr_CTextView_openEditBox_NoTarget Unable to find rename target '%1'.",
                 path);
    }
    CAttrMap parameters = paragraphParameters(choice.paragraph);
    parameters["source"] = CAttrValue(getFullName());
    QEL_TRY(setAttribute(kRefused, CAttrValue(false), true), getFullName());
    QEL_TRY(sendEvent(*target, event, parameters), getFullName());
    isRefused = isReleased() || getAttrBool(kRefused);
    return {};
}

CError CTextView::open(const Choice& choice)
{
    const CHold hold(*this);
    if (!isEditable() || isEditing()) {
        return {};
    }
    bool isRefused = false;
    QEL_TRY(askTarget(choice, isRefused), getFullName());
    if (isRefused) {
        return {};
    }
    const CAttrMap attributes = frameAttributes(choice);
    CView* frame = nullptr;
    QEL_TRY(createChild(frame, kBoxTemplate, kBoxName, true, nullptr, &attributes), getFullName());
    CEditBox* const box = findBox(*frame);
    CError error = box ? configure(*box) : CError();
    if (!box || error) {
        releaseObject(frame);
        QEL_TRY(std::move(error), getFullName());
        QEL_FAIL(getFullName(), "@qelstr_CTextView_openEditBox_NoBox The template '%1' has no edit box.",
                 kBoxTemplate);
    }
    editFrame_ = frame;
    editBox_ = box;
    edited_ = choice.paragraph;
    // The box is to get the pointer, whoever this view keeps from it otherwise.
    wasIntercepting_ = getAttrBool("is-intercepting") && !getAttrBool(kAllowChilds);
    if (wasIntercepting_) {
        QEL_TRY(setAttribute(kAllowChilds, CAttrValue(true), true), getFullName());
    }
    markLook();
    QEL_TRY(solveLayout(), getFullName());
    const bool isAllSelected = choice.isAllSelected || getAttrBool("is-select-all-on-focus");
    const CHold boxHold(*box);
    QEL_TRY(box->start(*this, getEditText(choice.paragraph), isAllSelected), getFullName());
    if (box->isReleased()) {
        return {};
    }
    if (choice.point && !isAllSelected) {
        box->placeCaret(*choice.point);
    }
    return openKeyboard(*box);
}

CAttrMap CTextView::frameAttributes(const Choice& choice) const
{
    CAttrMap attributes;
    for (const char* const name : kFrameCopies) {
        if (const CAttrValue* const value = findAttr(name)) {
            attributes[name] = *value;
        }
    }
    attributes["temp-editbox-owner"] = CAttrValue(getFullName());
    if (choice.paragraph != kNone) {
        placeAtParagraph(choice.paragraph, attributes);
        return attributes;
    }
    attributes[kInnerBorder] = CAttrValue(getAttrString(kBoxInnerBorder, getAttrString(kInnerBorder)));
    const bool hasReadOut = dynamic_cast<CView*>(findChild("readout")) != nullptr;
    const CString atReadOut =
        getAttrString("editbox-readout-placement", getAttrString("readout-placement", "match"));
    attributes["placement"] =
        CAttrValue(hasReadOut ? atReadOut : getAttrString("editbox-placement", "match"));
    attributes["placement-match"] = CAttrValue(hasReadOut ? "^.readout" : "^");
    if (getAttrBool("is-editbox-full")) {
        attributes["width"] = CAttrValue("100%");
    }
    return attributes;
}

// Over the whole row, with the text where it was.
void CTextView::placeAtParagraph(std::int32_t paragraph, CAttrMap& attributes) const
{
    const double scale = getInterfaceScale();
    const auto pixels = [&](double length) { return formatReal(length / scale, 2); };
    const CRect& box = getTextBox();
    const CRect row = getParagraphRect(static_cast<std::size_t>(paragraph));
    const double width = getClip(kTextClip).getRect().width;
    attributes["placement"] = CAttrValue("overlay");
    attributes["outer-border"] =
        CAttrValue("L" + pixels(-box.x) + " T" + pixels(row.y + getTextShiftY() - box.y));
    attributes["width"] = CAttrValue(width / scale);
    attributes["height"] = CAttrValue(row.height / scale);
    const CString border = "L" + pixels(box.x) + " R" + pixels(width - box.right());
    attributes[kInnerBorder] = CAttrValue(getAttrString(kBoxInnerBorder, border));
}

CError CTextView::configure(CEditBox& box) const
{
    CAttrMap attributes;
    attributes["font-name"] = CAttrValue(getAttrString("font-name"));
    attributes["text-alignment"] = CAttrValue(getAttrString("text-alignment", "left"));
    attributes[kAcceptChars] = CAttrValue(getAttrString(kAcceptChars));
    attributes[kMaxLength] = CAttrValue(getAttrInt(kMaxLength));
    attributes[kAcceptEnter] = CAttrValue(getAttrBool(kAcceptEnter, true));
    attributes[kAcceptTab] = CAttrValue(getAttrBool(kAcceptTab) || !getAttrString(kTabGroup).isEmpty());
    return box.setAttributes(attributes, true);
}

CError CTextView::openKeyboard(CEditBox& box)
{
    const auto* const settings = dynamic_cast<const CGlobalSettings*>(findObject(kGlobalSettings));
    if (!getAttrBool("is-virtual-keyboard-allowed") || !settings || !settings->isShowVirtualKeyboard()) {
        return {};
    }
    CAttrMap keyboard;
    const bool hasLetters = getAttrBool("is-virtual-keyboard-alphabet");
    keyboard["tag"] = CAttrValue(hasLetters ? "ui:virtual-keyboard-alphadigit" : "ui:virtual-keyboard-digit");
    keyboard["is-popup-toggle-always-create"] = CAttrValue(true);
    keyboard["window-alignment"] = CAttrValue("bottom-local-center");
    keyboard["popup-owner-window"] = CAttrValue(box.getFullName());
    keyboard["popup-virtual-keyboard-minus-char"] =
        CAttrValue(getAttrString("virtual-keyboard-minus-char", "-"));
    // A press in the text is no reason to close it.
    keyboard["popup-is-drop-down-behavior-disabled"] = CAttrValue(true);
    return box.eventPopupToggle(keyboard);
}

// --- the edit's end

CError CTextView::onEditEnded(const CString& text, CEditEnd end)
{
    const CHold hold(*this);
    CView* const frame = std::exchange(editFrame_, nullptr);
    editBox_ = nullptr;
    const std::int32_t paragraph = std::exchange(edited_, kNone);
    CError first;
    if (wasIntercepting_) {
        collectError(first, setAttribute(kAllowChilds, CAttrValue(false), true));
    }
    const CString typed = text;
    releaseObject(frame);
    markLook();
    collectError(first, commit(typed, end == CEditEnd::kCancel, paragraph));
    const bool isTab = end == CEditEnd::kTabForward || end == CEditEnd::kTabBackward;
    if (isTab && !isReleased()) {
        collectError(first, editNextInGroup(end == CEditEnd::kTabForward));
    }
    return first;
}

CError CTextView::commit(const CString& text, bool isCancelled, std::int32_t paragraph)
{
    const CHold hold(*this);
    CString result = isCancelled ? getEditText(paragraph) : text;
    if (result.isEmpty() && !isCancelled) {
        result = getAttrString("editbox-empty-value");
    }
    CError first;
    collectError(first, isCancelled ? onEditCancelled() : onTextCommitted(result, paragraph));
    CAttrMap parameters;
    parameters["text"] = CAttrValue(result);
    parameters["is-cancelled"] = CAttrValue(isCancelled);
    parameters["index"] = CAttrValue(paragraph);
    collectError(first, isReleased() ? CError() : raiseEvent(kTextChanged, parameters));
    collectError(first, isReleased() ? CError() : receiveEvent(kBoxTextChanged, parameters));
    return first;
}

CError CTextView::editNextInGroup(bool isForward)
{
    const CString name = getAttrString(kTabGroup);
    if (name.isEmpty()) {
        return {};
    }
    std::vector<CTextView*> group;
    collectTexts(getRootView(), group);
    std::erase_if(group, [&](const CTextView* each) {
        return each->getAttrString(kTabGroup) != name || !each->getViewArea().isShown() ||
               !each->isEditable();
    });
    const auto found = std::ranges::find(group, this);
    if (found == group.end() || group.size() < 2) {
        return {};
    }
    const auto index = static_cast<std::size_t>(found - group.begin());
    CTextView& next = *group[(index + (isForward ? 1 : group.size() - 1)) % group.size()];
    return next.receiveEvent(kChangeFocus, {{"is-tab", CAttrValue(true)}});
}

// --- for subclasses

CString CTextView::getEditText(std::int32_t paragraph) const
{
    return plainText(paragraph == kNone ? getTitle() : getParagraphText(paragraph));
}

CError CTextView::onTextCommitted(const CString& text, std::int32_t)
{
    return hasSource() ? CError() : setTitle(literalText(text));
}

bool CTextView::isParagraphShown(std::size_t paragraph) const
{
    return !isEditing() || (edited_ != kNone && static_cast<std::size_t>(edited_) != paragraph);
}

} // namespace qel
