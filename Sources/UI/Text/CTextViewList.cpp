// A text view that is a list.
#include "CTextViewList.h"

#include "CViewWindow.h"
#include "EventParameters.h"
#include "ListPopups.h"
#include "LiteralText.h"
#include "SystemEvents.h"

#include <cmath>

namespace qel {

namespace {

constexpr const char* kSelectedChanged = "selected-paragraph-changed";

// Attributes whose text is read when it is needed, and not kept a second time: few texts are lists.
constexpr const char* kHoverColor = "paragraph-hover-color";
constexpr const char* kSelectColor = "paragraph-select-color";
constexpr const char* kSelectTextColor = "paragraph-select-text-color";
constexpr const char* kMarkColor = "paragraph-mark-color";
constexpr const char* kTextSource = "text-source";
constexpr const char* kListId = "dynamic-list-parent-id";
constexpr const char* kNoItemsTitle = "no-items-title";
constexpr const char* kActivePrefix = "active-paragraph-prefix";

// Pixels at a scale of 1: between the longest item and the arrows, and of the bar that marks an item.
constexpr double kArrowGap = 8.0;
constexpr double kMarkWidth = 3.0;
constexpr double kMarkGap = 2.0;

} // namespace

void CTextViewList::buildClassInfo(CClassInfo& info)
{
    using Self = CTextViewList;
    CTextViewBase::buildClassInfo(info);
    info.bind<&Self::isHoverable_, &Self::attrIsParagraphHoverable>("is-paragraph-hoverable", false);
    info.bind<&Self::isSelectable_, &Self::attrIsParagraphSelectable>("is-paragraph-selectable", false);
    info.handle<&Self::attrParagraphHoverColor>(kHoverColor);
    info.handle<&Self::attrParagraphSelectColor>(kSelectColor);
    info.handle<&Self::attrParagraphSelectTextColor>(kSelectTextColor);
    info.bind<&Self::selected_, &Self::attrSelectedParagraph>(kSelected, kNone);
    info.handle<&Self::attrParagraphMarkColor>(kMarkColor);
    info.handle<&Self::attrTextSource>(kTextSource);
    info.bind<&Self::isSourceForced_>("is-text-source-forced", false);
    info.handle<&Self::attrTextSource>(kListId);
    info.bind<&Self::isSingleValue_, &Self::refreshText>("text-source-single-value", false);
    info.bind<&Self::maxItemCount_, &Self::refreshText>("max-item-count", 0);
    info.handle<&Self::refreshText>(kNoItemsTitle);
    info.bind<&Self::isEmptyAllowed_, &Self::refreshText>("allow-no-paragraphs", false);
    info.handle<&Self::refreshText>(kActivePrefix);
    info.bind<&Self::isTabletMode_, &Self::refreshText>("is-tablet-mode", false);
    info.bind<&Self::tabletParagraphHeight_, &Self::refreshText>("tablet-paragraph-height", 0.0);
    info.bind<&Self::isSelectedClickCancelling_>("is-selected-paragraph-click-cancels", false);
    info.bind<&Self::isRightClickSelecting_>("is-right-click-selects", false);
    info.handleEvent<&Self::eventTextSourceUpdate>(CParagraphSource::kUpdate);
    info.handleEvent<&Self::eventAutoClick>("auto-click");
    info.handleEvent<&Self::eventKeyPress>("key-press");
    info.handleEvent<&Self::eventPopupClosed>("popup-closed");
}

CError CTextViewList::initChilds()
{
    QEL_TRY(CTextViewBase::initChilds(), getFullName());
    // Lists may be children of the view.
    return findSource();
}

// --- attributes

CError CTextViewList::attrIsParagraphHoverable()
{
    markLook();
    return {};
}

CError CTextViewList::attrIsParagraphSelectable()
{
    markLook();
    return {};
}

CError CTextViewList::attrParagraphHoverColor()
{
    const CString color = getAttrString(kHoverColor);
    hasHoverColor_ = !color.isEmpty();
    setSlotColor(kHoverSlot, color);
    return {};
}

CError CTextViewList::attrParagraphSelectColor()
{
    const CString color = getAttrString(kSelectColor);
    hasSelectColor_ = !color.isEmpty();
    setSlotColor(kSelectSlot, color);
    return {};
}

CError CTextViewList::attrParagraphSelectTextColor()
{
    const CString color = getAttrString(kSelectTextColor);
    hasSelectTextColor_ = !color.isEmpty();
    setSlotColor(kSelectTextSlot, color);
    return {};
}

CError CTextViewList::attrParagraphMarkColor()
{
    const CString color = getAttrString(kMarkColor);
    hasMarkColor_ = !color.isEmpty();
    setSlotColor(kMarkSlot, color);
    return {};
}

CError CTextViewList::attrSelectedParagraph()
{
    if (findAttr(kActivePrefix) || isSingleValue_) {
        QEL_TRY(refreshText(), getFullName());
    }
    markLook();
    isScrollDue_ = true;
    return scrollToSelected();
}

CError CTextViewList::attrTextSource()
{
    return getInitState() >= InitState::kChildsDone && !isReleased() ? findSource() : CError();
}

CError CTextViewList::attrTitle()
{
    isSourceShown_ = isSourceShown_ && isSourceForced_;
    return CTextViewBase::attrTitle();
}

// --- the source

CError CTextViewList::findSource()
{
    QEL_TRY(source_.setPath(getAttrString(kTextSource)), getFullName());
    return source_.isThere() ? readSource() : refreshText();
}

CError CTextViewList::eventTextSourceUpdate(const CAttrMap&)
{
    return readSource();
}

CString CTextViewList::getListId() const
{
    return getAttrString(kListId);
}

CError CTextViewList::readSource()
{
    CError error = source_.read(getListId());
    isSourceShown_ = true;
    arrow_ = source_.hasSubLists() ? findTextImage({"is.button", "DynListArrow", {}}) : nullptr;
    hovered_ = hovered_ < getItemCount() ? hovered_ : kNone;
    CError refreshed = refreshText();
    markLook();
    return error ? std::move(error) : std::move(refreshed);
}

void CTextViewList::fillText(CTextWrapper& text)
{
    if (!isListShown()) {
        CTextViewBase::fillText(text);
        return;
    }
    const CString prefix = getAttrString(kActivePrefix);
    std::vector<CString> paragraphs;
    for (std::int32_t i = 0; i < getItemCount(); ++i) {
        if (!isSingleValue_ || i == selected_) {
            const CString itemText = literalText(findItem(i)->text);
            paragraphs.push_back(i == selected_ && !isSingleValue_ ? prefix + itemText : itemText);
        }
    }
    if (source_.getItems().empty() && !isEmptyAllowed_) {
        paragraphs.push_back(getAttrString(kNoItemsTitle, "<no items>"));
    }
    text.parseParagraphs(paragraphs);
}

std::int32_t CTextViewList::getItemCount() const
{
    return static_cast<std::int32_t>(isListShown() ? source_.getItems().size()
                                                   : getText().getParagraphs().size());
}

const CDynamicListItem* CTextViewList::findItem(std::int32_t index) const
{
    return isListShown() ? source_.findItem(index) : nullptr;
}

CString CTextViewList::getParagraphText(std::int32_t index) const
{
    if (index < 0 || index >= getItemCount()) {
        return {};
    }
    if (const CDynamicListItem* const item = findItem(index)) {
        return item->text;
    }
    std::vector<CString> paragraphs;
    for (const CString& line : getTitle().split(u'\n')) {
        for (const CString& part : getSeparator() ? line.split(getSeparator()) : std::vector{line}) {
            paragraphs.push_back(part);
        }
    }
    return static_cast<std::size_t>(index) < paragraphs.size() ? paragraphs[static_cast<std::size_t>(index)]
                                                               : CString();
}

// --- measures

double CTextViewList::getMaxCompactHeight() const
{
    const double highest = CTextViewBase::getMaxCompactHeight();
    const std::vector<CTextParagraph>& paragraphs = getText().getParagraphs();
    if (maxItemCount_ <= 0 || static_cast<std::size_t>(maxItemCount_) >= paragraphs.size()) {
        return highest;
    }
    const CTextParagraph& last = paragraphs[static_cast<std::size_t>(maxItemCount_) - 1];
    return std::min<double>(highest, last.top + last.height);
}

std::int32_t CTextViewList::getParagraphHeight() const
{
    return isTabletMode_ ? roundToPixel(tabletParagraphHeight_ * getInterfaceScale()) : 0;
}

double CTextViewList::getExtraWidth() const
{
    return arrow_ ? arrow_->getWidth() + roundToPixel(kArrowGap * getInterfaceScale()) : 0.0;
}

void CTextViewList::onTextLaidOut()
{
    CTextViewBase::onTextLaidOut();
    const double seen = getTextBox().height;
    if (!isScrollable() || seen <= 0.0) {
        return;
    }
    const double ratio = std::min(1.0, seen / getText().getHeight());
    const double offset = std::clamp(getAttrReal("offset-y"), 0.0, 1.0 - ratio);
    // Where all is seen, lines may have the room of the bar. Wrapped ones would break differently then, and
    // might not fit any more.
    if (!isTextWrapped()) {
        const CString barWidth = ratio < 1.0 ? getAttrString("scroller-width") : CString();
        getViewArea().setScrollerSize(CAxis::kX, parsePixels(barWidth, getInterfaceScale()));
    }
    const auto write = [this](const char* name, double value, double fallback) {
        if (getAttrReal(name, fallback) != value) {
            if (CError error = setAttribute(name, CAttrValue(value), true)) {
                traceError(error);
            }
        }
    };
    write("ratio-y", ratio, 1.0);
    write("offset-y", offset, 0.0);
    if (CError error = scrollToSelected()) {
        traceError(error);
    }
}

// --- drawing

const CPaletteColor& CTextViewList::getParagraphColor(std::size_t paragraph)
{
    const auto index = static_cast<std::int32_t>(paragraph);
    const CDynamicListItem* const item = findItem(index);
    const bool isNoItem = isListShown() && source_.getItems().empty();
    if (isNoItem || (item && !item->isEnabled && !isSingleValue_)) {
        return *getDisabledTextColor();
    }
    const bool isSelected = isSelectable_ && !isSingleValue_ && index == selected_;
    return getTextSlotColor(isSelected && hasSelectTextColor_ ? kSelectTextSlot : kTextSlot);
}

void CTextViewList::drawBehindText(CDrawContext& context)
{
    CTextViewBase::drawBehindText(context);
    if (isSingleValue_ || actsDisabled()) {
        return;
    }
    const auto drawStrip = [&](std::int32_t index, std::size_t slot) {
        if (index >= 0 && index < getItemCount() && isParagraphShown(static_cast<std::size_t>(index))) {
            context.drawFilledRect(getTextSlotColor(slot), getParagraphRect(static_cast<std::size_t>(index)),
                                   kTextClip, 1.0);
        }
    };
    if (isSelectable_ && hasSelectColor_) {
        drawStrip(selected_, kSelectSlot);
    }
    if (isHoverable_ && hasHoverColor_ && hovered_ != selected_ && isChoosable(hovered_)) {
        drawStrip(hovered_, kHoverSlot);
    }
    for (std::size_t i = 0; isListShown() && i < source_.getItems().size(); ++i) {
        const CDynamicListItem& item = source_.getItems()[i];
        if (item.isMarked && hasMarkColor_) {
            drawMark(context, i);
        }
        if (!arrow_ || item.subListId.isEmpty()) {
            continue;
        }
        const CRect row = getParagraphRect(i);
        const CRect& box = getTextBox();
        const CPoint point{box.right() - arrow_->getWidth(),
                           row.y + std::floor((row.height - arrow_->getHeight()) * 0.5)};
        for (const CImageLayer& layer : arrow_->layers) {
            context.drawGlyph(layer, point, kTextClip, getParagraphColor(i), 1.0);
        }
    }
}

void CTextViewList::drawMark(CDrawContext& context, std::size_t paragraph)
{
    const double width = roundToPixel(kMarkWidth * getInterfaceScale());
    const double gap = roundToPixel(kMarkGap * getInterfaceScale());
    const CRect row = getParagraphRect(paragraph);
    context.drawFilledRect(getTextSlotColor(kMarkSlot), {0.0, row.y + gap, width, row.height - 2.0 * gap},
                           kTextClip, 1.0);
}

void CTextViewList::markParagraph(std::int32_t index)
{
    if (index >= 0) {
        markPart(getParagraphRect(static_cast<std::size_t>(index)));
    }
}

// --- pointer

std::int32_t CTextViewList::findParagraphAt(const CAttrMap& parameters) const
{
    const double x = eventNumber(parameters, "x") - getArea().x;
    const double y = eventNumber(parameters, "y") - getArea().y;
    if (x < 0.0 || x >= getArea().width || isSingleValue_) {
        return kNone;
    }
    const std::optional<std::size_t> found = getText().findParagraph(y - getTextTop());
    return found && *found < static_cast<std::size_t>(getItemCount()) ? static_cast<std::int32_t>(*found)
                                                                      : kNone;
}

bool CTextViewList::isChoosable(std::int32_t index) const
{
    const CDynamicListItem* const item = findItem(index);
    return index >= 0 && index < getItemCount() && (!item || item->isEnabled);
}

void CTextViewList::hover(std::int32_t index)
{
    if (index == hovered_) {
        return;
    }
    const std::int32_t before = std::exchange(hovered_, index);
    if (isHoverable_) {
        markParagraph(before);
        markParagraph(hovered_);
    }
}

CError CTextViewList::onMouseMove(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewBase::onMouseMove(parameters), getFullName());
    if (!isReleased()) {
        hover(findParagraphAt(parameters));
    }
    return {};
}

CError CTextViewList::onMouseExit(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewBase::onMouseExit(parameters), getFullName());
    if (!isReleased() && openedItem_ == kNone) {
        hover(kNone);
    }
    return {};
}

CError CTextViewList::onMousePress(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewBase::onMousePress(parameters), getFullName());
    pressed_ = kNone;
    if (isReleased() || actsDisabled()) {
        return {};
    }
    CViewWindow* const window = getWindow();
    if (isFocusable() && isSelectable_ && window) {
        QEL_TRY(window->setKeyFocus(this, false), getFullName());
    }
    const std::int32_t index = isReleased() ? kNone : findParagraphAt(parameters);
    if (!isSelectable_ || !isChoosable(index)) {
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
    QEL_TRY(CTextViewBase::onMouseRelease(parameters), getFullName());
    const std::int32_t pressed = std::exchange(pressed_, kNone);
    const std::int32_t index = isReleased() ? kNone : findParagraphAt(parameters);
    return pressed == kNone || actsDisabled() ? CError() : chooseParagraph(index);
}

CError CTextViewList::onMouseReleaseR(const CAttrMap& parameters)
{
    const CHold hold(*this);
    QEL_TRY(CTextViewBase::onMouseReleaseR(parameters), getFullName());
    const bool isClick = isRightClickSelecting_ && isSelectable_ && !isReleased() && !actsDisabled();
    return isClick ? chooseParagraph(findParagraphAt(parameters)) : CError();
}

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
    const CObject* const source = findObject(source_.getPath());
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
    return openedItem_ == kNone ? CTextViewBase::eventPopupResult(parameters)
                                : deliverPopupResult(*this, parameters);
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
    const bool isStripMoved = isInPopup(*this) && isHoverable_;
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
    const std::int32_t cursor = isInPopup(*this) && hovered_ != kNone ? hovered_ : selected_;
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
