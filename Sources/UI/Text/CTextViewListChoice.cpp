// A text view that is a list: how its items are chosen.
#include "CTextViewList.h"

#include "CViewWindow.h"
#include "EventParameters.h"
#include "SystemEvents.h"

namespace qel {

namespace {

constexpr const char* kSelectedChanged = "selected-paragraph-changed";
constexpr const char* kResult = "popup-result";
constexpr const char* kSource = "source";
constexpr const char* kListTemplate = "ui:window-app-popup-list";

} // namespace

// --- choosing

CError CTextViewList::selectParagraph(std::int32_t index)
{
    return setAttribute(kSelected, CAttrValue(index), true);
}

CAttrMap CTextViewList::paragraphParameters(std::int32_t index) const
{
    const CDynamicListItem* const item = findItem(index);
    CAttrMap parameters;
    parameters["index"] = CAttrValue(index);
    parameters["list-id"] = CAttrValue(getListId());
    parameters["text"] = CAttrValue(getParagraphText(index));
    parameters["value"] = CAttrValue(item ? item->value : index);
    return parameters;
}

CError CTextViewList::raiseEvent(const char* name, const CAttrMap& parameters)
{
    const CHold hold(*this);
    CError first = fireEvent(name, parameters);
    if (!isReleased()) {
        CError error = notify(name, parameters, false);
        if (!first) {
            return error;
        }
        traceError(error);
    }
    return first;
}

CError CTextViewList::chooseParagraph(std::int32_t index)
{
    if (!isChoosable(index)) {
        return {};
    }
    const CDynamicListItem* const item = findItem(index);
    if (item && !item->subListId.isEmpty()) {
        return openedItem_ == index ? CError() : openSubList(index);
    }
    if (index == selected_ && isSelectedClickCancelling_) {
        return closePopup();
    }
    const CHold hold(*this);
    const CAttrMap parameters = paragraphParameters(index);
    QEL_TRY(selectParagraph(index), getFullName());
    if (!isReleased()) {
        QEL_TRY(raiseEvent(kSelectedChanged, parameters), getFullName());
    }
    return isReleased() ? CError() : deliverResult(parameters);
}

CError CTextViewList::deliverResult(CAttrMap parameters)
{
    const CHold hold(*this);
    const CString path = getAttrString("result-target");
    if (path.isEmpty()) {
        parameters.erase(kSource);
        QEL_TRY(fireEvent(kResult, parameters), getFullName());
        CViewWindow* const window = isReleased() ? nullptr : getWindow();
        return window ? window->passPopupResult(*this, parameters) : CError();
    }
    CObject* target = findObject(path);
    if (const CString attribute = getAttrString("result-target-redirect-attr");
        target && !attribute.isEmpty()) {
        const CString redirect = target->getAttrString(attribute);
        target = redirect.isEmpty() ? target : target->findObject(redirect);
    }
    if (!target) {
        QEL_FAIL(getFullName(), "@qelstr_CTextView_deliverResult_NoTarget Unable to find result target '%1'.",
                 path);
    }
    parameters[kSource] = CAttrValue(getFullName());
    if (const CString attribute = getAttrString("result-target-index-attr"); !attribute.isEmpty()) {
        QEL_TRY(target->setAttribute(attribute, parameters.at("index"), true), getFullName());
    }
    // A view that gets the result closes the pop-up with it; others know nothing of windows.
    const bool isView = dynamic_cast<CView*>(target) != nullptr;
    QEL_TRY(sendEvent(*target, kResult, parameters), getFullName());
    return isView || isReleased() ? CError() : closePopup();
}

bool CTextViewList::isInPopup() const
{
    return getRootView().getAttrBool("is-popup-window");
}

CError CTextViewList::closePopup()
{
    CViewWindow* const window = getWindow();
    return window && isInPopup() ? window->closeWindow() : CError();
}

// --- sub-lists

CError CTextViewList::eventAutoClick(const CAttrMap&)
{
    if (hovered_ == openedItem_ || actsDisabled()) {
        return {};
    }
    const CDynamicListItem* const item = findItem(hovered_);
    if (item && item->isEnabled && !item->subListId.isEmpty()) {
        return openSubList(hovered_);
    }
    // Another item is under the pointer now.
    return openedItem_ != kNone && hovered_ != kNone ? sendEvent(*this, "popup-close", {}) : CError();
}

CError CTextViewList::openSubList(std::int32_t index)
{
    const CObject* const source = findObject(sourcePath_);
    const CDynamicListItem* const item = findItem(index);
    if (!source || !item || item->subListId.isEmpty()) {
        return {};
    }
    CAttrMap parameters;
    parameters["tag"] = CAttrValue(kListTemplate);
    parameters["window-alignment"] = CAttrValue("right");
    parameters["is-popup-toggle-always-create"] = CAttrValue(true);
    parameters["shift-y"] = CAttrValue(
        (getParagraphRect(static_cast<std::size_t>(index)).y - getTextBox().y) / getInterfaceScale() +
        getAttrReal("popup-shift-y"));
    parameters["shift-x"] = CAttrValue(getAttrReal("popup-shift-x"));
    parameters["popup-item-list"] = CAttrValue(source->getFullName());
    parameters["popup-dynamic-list-parent-id"] = CAttrValue(item->subListId);
    parameters["popup-dynamic-list-parent-item"] = CAttrValue(index);
    parameters["popup-selected-paragraph"] = CAttrValue(kNone);
    const CString opener = getAttrString("original-opener");
    parameters["popup-original-opener"] = CAttrValue(opener.isEmpty() ? getFullName() : opener);
    const CHold hold(*this);
    const std::int32_t opened = index;
    QEL_TRY(eventPopupToggle(parameters), getFullName());
    if (!isReleased()) {
        openedItem_ = opened;
        hover(opened);
    }
    return {};
}

CError CTextViewList::eventPopupClosed(const CAttrMap&)
{
    openedItem_ = kNone;
    if (!isStateActive("hover")) {
        hover(kNone); // the pointer was in the pop-up
    }
    return {};
}

CError CTextViewList::eventPopupResult(const CAttrMap& parameters)
{
    return openedItem_ == kNone ? CTextViewBase::eventPopupResult(parameters) : deliverResult(parameters);
}

// --- keys

CError CTextViewList::scrollToSelected()
{
    // A list that opens has no size yet when it hears of its selection.
    if (!isScrollDue_ || getTextBox().height <= 0.0 || isReleased()) {
        return {};
    }
    isScrollDue_ = false;
    return scrollTo(selected_);
}

CError CTextViewList::scrollTo(std::int32_t index)
{
    const CRect& box = getTextBox();
    if (!isScrollable() || index < 0 || index >= getItemCount() || isSingleValue_) {
        return {};
    }
    const CRect row = getParagraphRect(static_cast<std::size_t>(index));
    const double above = box.y - row.y;
    const double below = row.bottom() - box.bottom();
    if (above <= 0.0 && below <= 0.0) {
        return {};
    }
    const double shift = getTextShiftY() + (above > 0.0 ? -above : below);
    return setAttribute("offset-y", CAttrValue(shift / getText().getHeight()), true);
}

CError CTextViewList::moveCursor(std::int32_t by)
{
    // In a pop-up the keys only move the strip, since a choice closes it.
    const bool isStripMoved = isInPopup() && isHoverable_;
    std::int32_t index = isStripMoved && hovered_ != kNone ? hovered_ : selected_;
    if (getItemCount() == 0) {
        return {};
    }
    const std::int32_t last = getItemCount() - 1;
    const std::int32_t step = by < 0 ? -1 : 1;
    index = index == kNone && by < 0 ? last + 1 : index;
    std::int32_t wanted = std::clamp(index + by, 0, last);
    while (wanted >= 0 && wanted <= last && !isChoosable(wanted)) {
        wanted += step;
    }
    if (!isChoosable(wanted) || wanted == index) {
        return {};
    }
    if (isStripMoved) {
        hover(wanted);
        return scrollTo(wanted);
    }
    const CHold hold(*this);
    QEL_TRY(selectParagraph(wanted), getFullName());
    return isReleased() ? CError() : raiseEvent(kSelectedChanged, paragraphParameters(wanted));
}

CError CTextViewList::eventKeyPress(const CAttrMap& parameters)
{
    namespace key = platform::key;
    if (!isSelectable_ || actsDisabled() || eventFlag(parameters, "is-character")) {
        return {};
    }
    const std::int32_t page = std::max(1, maxItemCount_ - 1);
    const std::int32_t cursor = isInPopup() && hovered_ != kNone ? hovered_ : selected_;
    switch (static_cast<std::uint32_t>(eventNumber(parameters, "keycode"))) {
    case key::kUp:
        return moveCursor(-1);
    case key::kDown:
        return moveCursor(1);
    case key::kPageUp:
        return moveCursor(-page);
    case key::kPageDown:
        return moveCursor(page);
    case key::kHome:
        return moveCursor(-getItemCount());
    case key::kEnd:
        return moveCursor(getItemCount());
    case key::kRight:
        return openSubList(cursor);
    case key::kLeft:
        return getListId().isEmpty() ? CError() : closePopup();
    case key::kEnter:
        return isInPopup() ? chooseParagraph(cursor)
                           : raiseEvent(kDoubleClicked, paragraphParameters(cursor));
    case key::kEscape:
        if (CViewWindow* const window = getWindow(); window && !isInPopup()) {
            return window->setKeyFocus(nullptr, false);
        }
        return closePopup();
    default:
        return {};
    }
}

} // namespace qel
