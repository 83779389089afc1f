// A view that shows a text.
#include "CTextViewBase.h"

#include <cmath>

namespace qel {

namespace {

// Attributes whose text is read when it changes, and not kept a second time: there are many texts.
constexpr const char* kFontName = "font-name";
constexpr const char* kTextColors[] = {"text-color", "text-color1", "text-color2"};
constexpr const char* kAlignment = "text-alignment";
constexpr const char* kAlignmentV = "text-alignment-v";
constexpr const char* kParagraphSpacing = "paragraph-spacing";
constexpr const char* kLineSpacing = "line-spacing";
constexpr const char* kMaxTextHeight = "max-text-height";
constexpr const char* kSeparator = "separator-char";
constexpr const char* kDefaultColor = "Text";

// What is longer than the view by no more keeps its end: sizes are not rounded, widths of texts are.
constexpr double kShortenFromPx = 1.0;

// Glyphs may reach over their place by this part of a line's height.
constexpr double kOverhang = 0.25;

double roundedHalf(double spare)
{
    return std::floor(spare * 0.5 + 0.5);
}

} // namespace

// The colours of one paragraph.
class CTextViewBase::CColors final : public CTextColorSource
{
public:
    CColors(CTextViewBase& view, const CPaletteColor& color) : view_(view), color_(color) {}

    const CPaletteColor& getTextColor(std::size_t color) const override
    {
        if (color == 0 || color >= kOwnColors + kMaxImageColors) {
            return color_;
        }
        return view_.getTextSlotColor(color < kOwnColors ? kTextSlot + color
                                                         : kImageSlots + color - kOwnColors);
    }

private:
    CTextViewBase& view_;
    const CPaletteColor& color_;
};

void CTextViewBase::buildClassInfo(CClassInfo& info)
{
    using Self = CTextViewBase;
    CView::buildClassInfo(info);
    info.handle<&Self::attrFontName>(kFontName);
    info.handle<&Self::attrTextColor>(kTextColors[0]);
    info.handle<&Self::attrTextColor1>(kTextColors[1]);
    info.handle<&Self::attrTextColor2>(kTextColors[2]);
    info.handle<&Self::attrTextAlignment>(kAlignment);
    info.handle<&Self::attrTextAlignment>(kAlignmentV);
    info.bind<&Self::isTextWrapped_, &Self::attrIsTextWrapped>("is-text-wrapped", false);
    info.handle<&Self::attrParagraphSpacing>(kParagraphSpacing);
    info.handle<&Self::attrLineSpacing>(kLineSpacing);
    info.handle<&Self::attrMaxTextHeight>(kMaxTextHeight);
    info.handle<&Self::attrSeparatorChar>(kSeparator);
    info.bind<&Self::title_, &Self::attrTitle>("title", "");
}

CTextViewBase::CTextViewBase()
{
    allocateClips(kTextClip);
    text_.setImageFinder([this](const CTextImageName& name) { return findTextImage(name); });
}

CError CTextViewBase::init()
{
    QEL_TRY(CView::init(), getFullName());
    QEL_TRY(loadFont(), getFullName());
    for (std::size_t i = 0; i < CTextColorSource::kOwnColors; ++i) {
        QEL_TRY(readColor(i), getFullName());
    }
    return {};
}

CError CTextViewBase::applyAttrs()
{
    QEL_TRY(CView::applyAttrs(), getFullName());
    isReady_ = true;
    getViewArea().requestReport(); // places that were reported before now count, too
    return refreshText();
}

// --- attributes

CError CTextViewBase::loadFont()
{
    const CString name = getAttrString(kFontName);
    auto* const font = dynamic_cast<CFontObject*>(findObject(name));
    if (!font) {
        QEL_FAIL(getFullName(), "@qelstr_CTextView_attrFontName_NotFound Font '%1' not found.", name);
    }
    QEL_TRY(text_.setFontObject(font, getInterfaceScale()), getFullName());
    return {};
}

CError CTextViewBase::attrFontName()
{
    if (!isReady()) {
        return {};
    }
    QEL_TRY(loadFont(), getFullName());
    markLook();
    return refreshText();
}

CError CTextViewBase::readColor(std::size_t color)
{
    setSlotColor(kTextSlot + color, getAttrString(kTextColors[color], kDefaultColor));
    return {};
}

CError CTextViewBase::attrTextAlignment()
{
    const CString alignment = getAttrString(kAlignment);
    alignmentH_ = parseAlignment(alignment, CAxis::kX).value_or(CAlignment::kStart);
    alignmentV_ = parseAlignment(getAttrString(kAlignmentV), CAxis::kY).value_or(CAlignment::kCenter);
    text_.setJustified(alignment == "justify");
    layoutText();
    return {};
}

CError CTextViewBase::attrIsTextWrapped()
{
    layoutText();
    return {};
}

CError CTextViewBase::attrParagraphSpacing()
{
    const double spacing = parsePixels(getAttrString(kParagraphSpacing), getInterfaceScale());
    text_.setParagraphSpacing(roundToPixel(spacing));
    layoutText();
    return {};
}

CError CTextViewBase::attrLineSpacing()
{
    text_.setLineSpacing(roundToPixel(parsePixels(getAttrString(kLineSpacing), getInterfaceScale())));
    layoutText();
    return {};
}

CError CTextViewBase::attrMaxTextHeight()
{
    const CString height = getAttrString(kMaxTextHeight);
    const bool isNumber = !height.isEmpty() && !(height == "compact") && !(height == "height");
    isHeightKept_ = height == "height";
    maxHeight_ = isNumber ? parsePixels(height, getInterfaceScale()) : kNoLimit;
    tellCompactSize();
    return {};
}

CError CTextViewBase::attrSeparatorChar()
{
    const CString separator = getAttrString(kSeparator);
    separator_ = separator.isEmpty() ? u'\0' : separator[0];
    return refreshText();
}

CError CTextViewBase::attrTitle()
{
    return refreshText();
}

CError CTextViewBase::attrCompactWidth()
{
    QEL_TRY(CView::attrCompactWidth(), getFullName());
    tellCompactSize();
    return {};
}

CError CTextViewBase::attrCompactHeight()
{
    QEL_TRY(CView::attrCompactHeight(), getFullName());
    tellCompactSize();
    return {};
}

CError CTextViewBase::attrInnerBorder()
{
    QEL_TRY(CView::attrInnerBorder(), getFullName());
    if (isReady()) {
        // Without a change of its rectangles the view would not hear of it.
        getViewArea().requestReport();
    }
    return {};
}

CError CTextViewBase::attrOffsetX()
{
    QEL_TRY(CView::attrOffsetX(), getFullName());
    markLook();
    return {};
}

CError CTextViewBase::attrOffsetY()
{
    QEL_TRY(CView::attrOffsetY(), getFullName());
    markLook();
    return {};
}

// --- the text

void CTextViewBase::fillText(CTextWrapper& text)
{
    text.parse(title_, getSeparator());
}

CError CTextViewBase::refreshText()
{
    if (!isReady()) {
        return {};
    }
    const auto place = [this] {
        return text_.getLines().empty() ? CPoint{} : CPoint{getLineX(text_.getLines()[0]), getTextTop()};
    };
    const CPoint before = place();
    const std::int32_t heightBefore = text_.getHeight();
    fillText(text_);
    updateImageColors();
    layoutText();
    const CPoint after = place();
    const std::optional<CTextWrapper::Span> change = text_.getChange();
    if (change && before.x == after.x && before.y == after.y && heightBefore == text_.getHeight()) {
        const double overhang = text_.getHeight() * kOverhang;
        if (change->begin < change->end) {
            markPart({after.x + change->begin - overhang, after.y - overhang,
                      change->end - change->begin + 2.0 * overhang, text_.getHeight() + 2.0 * overhang});
        }
    } else {
        markLook();
    }
    return {};
}

void CTextViewBase::layoutText()
{
    if (!isReady()) {
        return;
    }
    const bool isWidthKnown = textBox_.width > 0.0;
    text_.setParagraphHeight(getParagraphHeight());
    text_.wrap(isTextWrapped_ && isWidthKnown ? std::optional(textBox_.width) : std::nullopt);
    if (!isTextWrapped_ && isWidthKnown && isShortening()) {
        text_.shorten(textBox_.width + kShortenFromPx);
    }
    tellCompactSize();
    onTextLaidOut();
}

void CTextViewBase::tellCompactSize()
{
    if (isReady()) {
        const double height = std::min<double>(text_.getHeight(), getMaxCompactHeight());
        tellCompactSize(CAxis::kX, text_.getNaturalWidth() + getExtraWidth(), "compact-width");
        tellCompactSize(CAxis::kY, height, "compact-height");
    }
}

void CTextViewBase::tellCompactSize(CAxis axis, double size, const char* attribute)
{
    const CAttrValue* const fixed = findAttr(attribute);
    if (!fixed || fixed->toString().isEmpty()) {
        getViewArea().setCompactSize(axis, size);
    }
}

double CTextViewBase::getMaxCompactHeight() const
{
    return isHeightKept_ && textBox_.height > 0.0 ? textBox_.height : maxHeight_;
}

const CImage* CTextViewBase::findTextImage(const CTextImageName& name)
{
    auto known = imageSets_.find(name.set);
    if (known == imageSets_.end()) {
        auto* object = dynamic_cast<CImageSetObject*>(findObject(name.set));
        if (!object) {
            object = dynamic_cast<CImageSetObject*>(findObject("shared::" + name.set));
        }
        std::shared_ptr<const CImageSet> images;
        if (object) {
            if (CError error = object->getImageSet(getInterfaceScale(), images)) {
                traceError(error);
            }
        }
        known = imageSets_.emplace(name.set, std::move(images)).first;
    }
    const CImageSet* const images = known->second.get();
    return images ? images->getImage(images->findRange(name.range).first) : nullptr;
}

void CTextViewBase::updateImageColors()
{
    const std::vector<CString>& colors = text_.getImageColors();
    if (colors == imageColors_) {
        return;
    }
    imageColors_ = colors;
    for (std::size_t i = 0; i < std::min(colors.size(), kMaxImageColors); ++i) {
        setSlotColor(kImageSlots + i, colors[i]);
    }
}

// --- places

void CTextViewBase::updateClips()
{
    CView::updateClips();
    if (!isReady() || getArea().isEmpty()) {
        return;
    }
    const CRect before = textBox_;
    const bool isMoved = placeTextBox();
    if (before.width != textBox_.width) {
        layoutText();
    } else if (isMoved) {
        tellCompactSize();
        onTextLaidOut();
    }
    if (isMoved) {
        markLook();
    }
}

bool CTextViewBase::placeTextBox()
{
    using Var = CViewArea::Var;
    const CRect& area = getArea();
    const CViewArea& layout = getViewArea();
    const auto length = [&](Var variable, CAxis axis) {
        return static_cast<double>(layout.getValue(variable, axis));
    };
    const double barWidth = isScrollable() ? length(Var::kScroller, CAxis::kX) : 0.0;
    const double barHeight = isScrollable() ? length(Var::kScroller, CAxis::kY) : 0.0;
    setClip(kTextClip, {area.x, area.y, area.width - barWidth, area.height - barHeight});
    const CRect before = textBox_;
    textBox_.x = length(Var::kInnerBefore, CAxis::kX);
    textBox_.y = length(Var::kInnerBefore, CAxis::kY);
    textBox_.width = std::max(0.0, area.width - barWidth - textBox_.x - length(Var::kInnerAfter, CAxis::kX));
    textBox_.height =
        std::max(0.0, area.height - barHeight - textBox_.y - length(Var::kInnerAfter, CAxis::kY));
    return !(before == textBox_);
}

double CTextViewBase::getTextShiftY() const
{
    return isScrollable() ? std::clamp(getAttrReal("offset-y"), 0.0, 1.0) * text_.getHeight() : 0.0;
}

double CTextViewBase::getTextTop() const
{
    const double spare = textBox_.height - text_.getHeight();
    // One line that is higher than the view keeps to the middle; of many the first is to be seen.
    const bool isAtTop = spare < 0.0 && (text_.getLines().size() > 1 || isScrollable());
    double shift = 0.0;
    if (!isAtTop && alignmentV_ != CAlignment::kStart) {
        shift = alignmentV_ == CAlignment::kCenter ? roundedHalf(spare) : spare;
    }
    return textBox_.y + shift - getTextShiftY();
}

double CTextViewBase::getLineX(const CTextLine& line) const
{
    const double spare = std::max(0.0, textBox_.width - line.width);
    double shift = 0.0;
    if (alignmentH_ != CAlignment::kStart) {
        shift = alignmentH_ == CAlignment::kCenter ? roundedHalf(spare) : std::floor(spare);
    }
    return textBox_.x + shift - getTextShiftX();
}

CRect CTextViewBase::getParagraphRect(std::size_t paragraph) const
{
    if (paragraph >= text_.getParagraphs().size()) {
        return {};
    }
    const CTextParagraph& found = text_.getParagraphs()[paragraph];
    return {0.0, getTextTop() + found.top, getArea().width, static_cast<double>(found.height)};
}

void CTextViewBase::markPart(const CRect& part)
{
    if (isReady()) {
        const CRect& area = getArea();
        getViewContext().getSectorMap().markDirty(
            part.movedBy(area.x, area.y).intersectedWith(getVisibleArea()), *this);
    }
}

// --- drawing

const CPaletteColor& CTextViewBase::getTextSlotColor(std::size_t slot)
{
    return actsDisabled() ? *getDisabledTextColor() : *getColor(slot);
}

const CPaletteColor& CTextViewBase::getParagraphColor(std::size_t)
{
    return getTextSlotColor(kTextSlot);
}

void CTextViewBase::draw(CDrawContext& context)
{
    drawBehindText(context);
    const double top = getTextTop();
    for (const CTextLine& line : text_.getLines()) {
        const CPoint point{getLineX(line), top + line.top};
        const double overhang = line.height * kOverhang;
        const CRect reach{point.x - overhang, point.y - overhang, line.width + 2.0 * overhang,
                          line.height + 2.0 * overhang};
        if (isParagraphShown(line.paragraph) && context.isRectVisible(reach, kTextClip)) {
            const CColors colors(*this, getParagraphColor(line.paragraph));
            text_.drawLine(context, line, point, kTextClip, colors);
        }
    }
}

} // namespace qel
