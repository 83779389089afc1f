// A view that shows a text.
#include "CTextViewBase.h"

#include <cmath>
#include <limits>

namespace qel {

namespace {

constexpr const char* kDefaultColor = "Text";

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
    info.bind<&Self::fontName_, &Self::attrFontName>("font-name", "");
    info.bind<&Self::textColor_, &Self::attrTextColor>("text-color", kDefaultColor);
    info.bind<&Self::textColor1_, &Self::attrTextColor1>("text-color1", kDefaultColor);
    info.bind<&Self::textColor2_, &Self::attrTextColor2>("text-color2", kDefaultColor);
    info.bind<&Self::textAlignment_, &Self::attrTextAlignment>("text-alignment", "left");
    info.bind<&Self::textAlignmentV_, &Self::attrTextAlignment>("text-alignment-v", "center");
    info.bind<&Self::isTextWrapped_, &Self::attrIsTextWrapped>("is-text-wrapped", false);
    info.bind<&Self::paragraphSpacing_, &Self::attrParagraphSpacing>("paragraph-spacing", "");
    info.bind<&Self::maxTextHeight_, &Self::attrMaxTextHeight>("max-text-height", "compact");
    info.bind<&Self::separator_, &Self::attrTitle>("separator-char", "");
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
    setSlotColor(kTextSlot, textColor_);
    setSlotColor(kTextSlot + 1, textColor1_);
    setSlotColor(kTextSlot + 2, textColor2_);
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
    auto* const font = dynamic_cast<CFontObject*>(findObject(fontName_));
    if (!font) {
        QEL_FAIL(getFullName(), "@qelstr_CTextView_attrFontName_NotFound Font '%1' not found.", fontName_);
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

CError CTextViewBase::changeColor(std::size_t color, const CString& name)
{
    if (isReady()) {
        setSlotColor(kTextSlot + color, name);
    }
    return {};
}

CError CTextViewBase::attrTextColor()
{
    return changeColor(0, textColor_);
}

CError CTextViewBase::attrTextColor1()
{
    return changeColor(1, textColor1_);
}

CError CTextViewBase::attrTextColor2()
{
    return changeColor(2, textColor2_);
}

CError CTextViewBase::attrTextAlignment()
{
    isJustified_ = textAlignment_ == "justify";
    alignmentH_ = parseAlignment(textAlignment_, CAxis::kX).value_or(CAlignment::kStart);
    alignmentV_ = parseAlignment(textAlignmentV_, CAxis::kY).value_or(CAlignment::kCenter);
    text_.setJustified(isJustified_);
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
    layoutText();
    return {};
}

CError CTextViewBase::attrMaxTextHeight()
{
    tellCompactSize();
    return {};
}

CError CTextViewBase::attrTitle()
{
    return refreshText();
}

CError CTextViewBase::setTitle(const CString& text)
{
    if (text.find(u'{') == CString::kNone) {
        return setAttribute("title", text, true);
    }
    title_ = text;
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
    text_.setParagraphSpacing(roundToPixel(parsePixels(paragraphSpacing_, getInterfaceScale())));
    const bool isWidthKnown = textBox_.width > 0.0;
    text_.wrap(isTextWrapped_ && isWidthKnown ? std::optional(textBox_.width) : std::nullopt);
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
    if (maxTextHeight_.isEmpty() || maxTextHeight_ == "compact") {
        return std::numeric_limits<double>::infinity();
    }
    if (maxTextHeight_ == "height") {
        return textBox_.height > 0.0 ? textBox_.height : std::numeric_limits<double>::infinity();
    }
    return parsePixels(maxTextHeight_, getInterfaceScale());
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
