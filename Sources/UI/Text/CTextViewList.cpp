// A text view that is a list.
#include "CTextViewList.h"

#include "CViewWindow.h"
#include "EventParameters.h"
#include "ListPopups.h"
#include "SystemEvents.h"

namespace qel {

namespace {

constexpr const char* kSelectedChanged = "selected-paragraph-changed";

} // namespace

void CTextViewList::buildClassInfo(CClassInfo& info)
{
    using Self = CTextViewList;
    CTextViewItems::buildClassInfo(info);
    info.bind<&Self::isSelectedClickCancelling_>("is-selected-paragraph-click-cancels", false);
    info.bind<&Self::isRightClickSelecting_>("is-right-click-selects", false);
    info.handleEvent<&Self::eventAutoClick>("auto-click");
    info.handleEvent<&Self::eventKeyPress>("key-press");
    info.handleEvent<&Self::eventPopupClosed>("popup-closed");
}

// --- pointer

CError CTextViewList::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewItems::onMouseMove(parameters), getFullName());
    if (!isReleased()) {
        hover(findParagraphAt(parameters));
    }
    return {};
}

CError CTextViewList::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewItems::onMouseExit(parameters), getFullName());
    if (!isReleased() && openedItem_ == kNone) {
        hover(kNone);
    }
    return {};
}

CError CTextViewList::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewItems::onMousePress(parameters), getFullName());
    pressed_ = kNone;
    if (isReleased() || actsDisabled()) {
        return {};
    }
    CViewWindow* const window = getWindow();
    if (isFocusable() && isSelectable() && window) {
        QEL_TRY(window->setKeyFocus(this, false), getFullName());
    }
    const std::int32_t index = isReleased() ? kNone : findParagraphAt(parameters);
    if (!isSelectable() || !isChoosable(index)) {
        return {};
    }
    if (eventFlag(parameters, "is-double-click")) {
        return raiseEvent(kDoubleClicked, paragraphParameters(index));
    }
    pressed_ = index;
    return {};
}

CError CTextViewList::onMouseRelease(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewItems::onMouseRelease(parameters), getFullName());
    const std::int32_t pressed = std::exchange(pressed_, kNone);
    const std::int32_t index = isReleased() ? kNone : findParagraphAt(parameters);
    return pressed == kNone || actsDisabled() ? CError() : chooseParagraph(index);
}

CError CTextViewList::onMouseReleaseR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewItems::onMouseReleaseR(parameters), getFullName());
    const bool isClick = isRightClickSelecting_ && isSelectable() && !isReleased() && !actsDisabled();
    return isClick ? chooseParagraph(findParagraphAt(parameters)) : CError();
}

// --- choosing

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
    if (index == getSelectedParagraph() && isSelectedClickCancelling_) {
        return closeOwnPopup(*this);
    }
    const CHold hold(*this);
    const CAttrMap parameters = paragraphParameters(index);
    QEL_TRY(selectParagraph(index), getFullName());
    if (!isReleased()) {
        QEL_TRY(raiseEvent(kSelectedChanged, parameters), getFullName());
    }
    return isReleased() ? CError() : deliverPopupResult(*this, parameters);
}

// --- sub-lists

CError CTextViewList::eventAutoClick(const CAttrMap&)
{
    if (getHovered() == openedItem_ || actsDisabled()) {
        return {};
    }
    const CDynamicListItem* const item = findItem(getHovered());
    if (item && item->isEnabled && !item->subListId.isEmpty()) {
        return openSubList(getHovered());
    }
    // Another item is under the pointer now.
    return openedItem_ != kNone && getHovered() != kNone ? sendEvent(*this, "popup-close", {}) : CError();
}

CError CTextViewList::openSubList(std::int32_t index)
{
    const CObject* const source = findObject(getSource().getPath());
    const CDynamicListItem* const item = findItem(index);
    if (!source || !item || item->subListId.isEmpty()) {
        return {};
    }
    const CHold hold(*this);
    const double rowY = getParagraphRect(static_cast<std::size_t>(index)).y - getTextBox().y;
    QEL_TRY(qel::openSubList(*this, source->getFullName(), *item, index, rowY), getFullName());
    if (!isReleased()) {
        openedItem_ = index;
        hover(index);
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
    return openedItem_ == kNone ? CTextViewItems::eventPopupResult(parameters)
                                : deliverPopupResult(*this, parameters);
}

// --- keys

CError CTextViewList::moveCursor(std::int32_t by)
{
    // In a pop-up the keys only move the strip, since a choice closes it.
    const bool isStripMoved = isInPopup(*this) && isHoverable();
    std::int32_t index = isStripMoved && getHovered() != kNone ? getHovered() : getSelectedParagraph();
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
    if (!isSelectable() || actsDisabled() || eventFlag(parameters, "is-character")) {
        return {};
    }
    const std::int32_t page = std::max(1, getMaxItemCount() - 1);
    const std::int32_t cursor =
        isInPopup(*this) && getHovered() != kNone ? getHovered() : getSelectedParagraph();
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
        return getListId().isEmpty() ? CError() : closeOwnPopup(*this);
    case key::kEnter:
        return isInPopup(*this) ? chooseParagraph(cursor)
                                : raiseEvent(kDoubleClicked, paragraphParameters(cursor));
    case key::kEscape:
        if (CViewWindow* const window = getWindow(); window && !isInPopup(*this)) {
            return window->setKeyFocus(nullptr, false);
        }
        return closeOwnPopup(*this);
    default:
        return {};
    }
}

} // namespace qel
