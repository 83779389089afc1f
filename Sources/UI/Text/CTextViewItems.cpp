// A text view that shows the items of a list.
#include "CTextViewItems.h"

#include "EventParameters.h"
#include "LiteralText.h"

#include <cmath>

namespace qel {

namespace {

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

void CTextViewItems::buildClassInfo(CClassInfo& info)
{
    using Self = CTextViewItems;
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
    info.handleEvent<&Self::eventTextSourceUpdate>(CParagraphSource::kUpdate);
}

CError CTextViewItems::initChilds()
{
    QEL_TRY(CTextViewBase::initChilds(), getFullName());
    // Lists may be children of the view.
    return findSource();
}

// --- attributes

CError CTextViewItems::attrIsParagraphHoverable()
{
    markLook();
    return {};
}

CError CTextViewItems::attrIsParagraphSelectable()
{
    markLook();
    return {};
}

// True if there is one.
bool CTextViewItems::takeColor(const char* attribute, std::size_t slot)
{
    const CString name = getAttrString(attribute);
    setSlotColor(slot, name);
    return !name.isEmpty();
}

CError CTextViewItems::attrParagraphHoverColor()
{
    hasHoverColor_ = takeColor(kHoverColor, kHoverSlot);
    return {};
}

CError CTextViewItems::attrParagraphSelectColor()
{
    hasSelectColor_ = takeColor(kSelectColor, kSelectSlot);
    return {};
}

CError CTextViewItems::attrParagraphSelectTextColor()
{
    hasSelectTextColor_ = takeColor(kSelectTextColor, kSelectTextSlot);
    return {};
}

CError CTextViewItems::attrParagraphMarkColor()
{
    hasMarkColor_ = takeColor(kMarkColor, kMarkSlot);
    return {};
}

CError CTextViewItems::attrSelectedParagraph()
{
    if (findAttr(kActivePrefix) || isSingleValue_) {
        QEL_TRY(refreshText(), getFullName());
    }
    markLook();
    isScrollDue_ = true;
    return scrollToSelected();
}

CError CTextViewItems::attrTextSource()
{
    return getInitState() >= InitState::kChildsDone && !isReleased() ? findSource() : CError();
}

CError CTextViewItems::attrTitle()
{
    isSourceShown_ = isSourceShown_ && isSourceForced_;
    return CTextViewBase::attrTitle();
}

// --- the source

CError CTextViewItems::findSource()
{
    QEL_TRY(source_.setPath(getAttrString(kTextSource)), getFullName());
    return source_.isThere() ? readSource() : refreshText();
}

CError CTextViewItems::eventTextSourceUpdate(const CAttrMap&)
{
    return readSource();
}

CString CTextViewItems::getListId() const
{
    return getAttrString(kListId);
}

CError CTextViewItems::readSource()
{
    CError error = source_.read(getListId());
    isSourceShown_ = true;
    arrow_ = source_.hasSubLists() ? findTextImage({"is.button", "DynListArrow", {}}) : nullptr;
    hovered_ = hovered_ < getItemCount() ? hovered_ : kNone;
    CError refreshed = refreshText();
    markLook();
    return error ? std::move(error) : std::move(refreshed);
}

void CTextViewItems::fillText(CTextWrapper& text)
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

std::int32_t CTextViewItems::getItemCount() const
{
    return static_cast<std::int32_t>(isListShown() ? source_.getItems().size()
                                                   : getText().getParagraphs().size());
}

const CDynamicListItem* CTextViewItems::findItem(std::int32_t index) const
{
    return isListShown() ? source_.findItem(index) : nullptr;
}

CString CTextViewItems::getParagraphText(std::int32_t index) const
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

double CTextViewItems::getMaxCompactHeight() const
{
    const double highest = CTextViewBase::getMaxCompactHeight();
    const std::vector<CTextParagraph>& paragraphs = getText().getParagraphs();
    if (maxItemCount_ <= 0 || static_cast<std::size_t>(maxItemCount_) >= paragraphs.size()) {
        return highest;
    }
    const CTextParagraph& last = paragraphs[static_cast<std::size_t>(maxItemCount_) - 1];
    return std::min<double>(highest, last.top + last.height);
}

std::int32_t CTextViewItems::getParagraphHeight() const
{
    return isTabletMode_ ? roundToPixel(tabletParagraphHeight_ * getInterfaceScale()) : 0;
}

double CTextViewItems::getExtraWidth() const
{
    return arrow_ ? arrow_->getWidth() + roundToPixel(kArrowGap * getInterfaceScale()) : 0.0;
}

void CTextViewItems::onTextLaidOut()
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

const CPaletteColor& CTextViewItems::getParagraphColor(std::size_t paragraph)
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

void CTextViewItems::drawBehindText(CDrawContext& context)
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

void CTextViewItems::drawMark(CDrawContext& context, std::size_t paragraph)
{
    const double width = roundToPixel(kMarkWidth * getInterfaceScale());
    const double gap = roundToPixel(kMarkGap * getInterfaceScale());
    const CRect row = getParagraphRect(paragraph);
    context.drawFilledRect(getTextSlotColor(kMarkSlot), {0.0, row.y + gap, width, row.height - 2.0 * gap},
                           kTextClip, 1.0);
}

void CTextViewItems::markParagraph(std::int32_t index)
{
    if (index >= 0) {
        markPart(getParagraphRect(static_cast<std::size_t>(index)));
    }
}

// --- what is chosen, and what is under the pointer

CError CTextViewItems::selectParagraph(std::int32_t index)
{
    return setAttribute(kSelected, CAttrValue(index), true);
}

std::int32_t CTextViewItems::findParagraphAt(const CAttrMap& parameters) const
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

bool CTextViewItems::isChoosable(std::int32_t index) const
{
    const CDynamicListItem* const item = findItem(index);
    return index >= 0 && index < getItemCount() && (!item || item->isEnabled);
}

void CTextViewItems::hover(std::int32_t index)
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

// --- what is in sight

CError CTextViewItems::scrollToSelected()
{
    // A list that opens has no size yet when it hears of its selection.
    if (!isScrollDue_ || getTextBox().height <= 0.0 || isReleased()) {
        return {};
    }
    isScrollDue_ = false;
    return scrollTo(selected_);
}

CError CTextViewItems::scrollTo(std::int32_t index)
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

} // namespace qel
