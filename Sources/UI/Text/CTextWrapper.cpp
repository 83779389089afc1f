// Breaks a text into lines and draws it.
#include "CTextWrapper.h"

#include "LiteralText.h"

#include <cmath>

namespace qel {

namespace {

// Sums of advances meet the width that was made of them up to their rounding.
constexpr double kTolerancePx = 0.01;

constexpr std::size_t kNoBreak = static_cast<std::size_t>(-1);

// Behind a line that is shortened.
constexpr int kDots = 3;

std::int32_t wholePixels(double length)
{
    return static_cast<std::int32_t>(std::ceil(std::min(length - kTolerancePx, kPixelLimit)));
}

CTextGlyph::Kind kindOf(char16_t character)
{
    switch (character) {
    case u' ':
        return CTextGlyph::Kind::kBlank;
    case u'-':
        return CTextGlyph::Kind::kHyphen;
    default:
        return CTextGlyph::Kind::kCharacter;
    }
}

} // namespace

CError CTextWrapper::setFontObject(CFontObject* font, double interfaceScale)
{
    beginText();
    endText();
    return font_.load(font, interfaceScale);
}

// --- the text

void CTextWrapper::beginText()
{
    wasOneLine_ = isOneLine();
    std::swap(glyphs_, glyphsBefore_);
    glyphs_.clear();
    paragraphs_.clear();
    lines_.clear();
    imageColors_.clear();
}

void CTextWrapper::endText()
{
    if (paragraphs_.empty()) {
        beginParagraph();
    }
    for (std::size_t i = 0; i < paragraphs_.size(); ++i) {
        paragraphs_[i].endGlyph = i + 1 < paragraphs_.size() ? paragraphs_[i + 1].beginGlyph : glyphs_.size();
    }
    double widest = 0.0;
    for (const CTextParagraph& paragraph : paragraphs_) {
        double pen = 0.0;
        for (std::size_t i = paragraph.beginGlyph; i < paragraph.endGlyph; ++i) {
            pen = glyphs_[i].kind == CTextGlyph::Kind::kLineBreak ? 0.0 : pen + glyphs_[i].advance;
            widest = std::max(widest, pen);
        }
    }
    naturalWidth_ = wholePixels(widest);
}

void CTextWrapper::parse(const CString& text, char16_t separator)
{
    beginText();
    beginParagraph();
    addRuns(text, separator, false);
    endText();
}

void CTextWrapper::parseParagraphs(const std::vector<CString>& paragraphs)
{
    beginText();
    for (const CString& paragraph : paragraphs) {
        beginParagraph();
        addRuns(paragraph, 0, true);
    }
    endText();
}

void CTextWrapper::setPlain(const CString& text)
{
    beginText();
    beginParagraph();
    addCharacters(text, {CTextRun::Kind::kText, {}, 0, text.length()});
    endText();
}

void CTextWrapper::addRuns(const CString& text, char16_t separator, bool isParagraph)
{
    CTextMarkup markup(text, separator);
    CTextRun run;
    while (markup.next(run)) {
        switch (run.kind) {
        case CTextRun::Kind::kText:
            addCharacters(text, run);
            break;
        case CTextRun::Kind::kImage:
            addImage(text, run);
            break;
        case CTextRun::Kind::kLineBreak:
            glyphs_.emplace_back().kind = CTextGlyph::Kind::kLineBreak;
            glyphs_.back().source = run.begin;
            break;
        case CTextRun::Kind::kParagraph:
            if (!isParagraph) {
                beginParagraph();
            }
            break;
        }
    }
}

void CTextWrapper::addCharacters(const CString& text, const CTextRun& run)
{
    const CFontStyle style = run.style.getFontStyle();
    for (std::size_t i = run.begin; i < run.end; ++i) {
        const char16_t character = plainCharacter(text[i]);
        CTextGlyph& glyph = glyphs_.emplace_back();
        glyph.kind = kindOf(character);
        glyph.color = run.style.color;
        glyph.rise = font_.getRise(style);
        glyph.source = i;
        if (!font_.isLoaded()) {
            continue;
        }
        glyph.layer = font_.findGlyph(style, character);
        glyph.isMissing = !glyph.layer && !isUnseen(character);
        glyph.advance = glyph.layer       ? glyph.layer->advance
                        : glyph.isMissing ? font_.getMissingAdvance()
                                          : 0.0;
    }
}

void CTextWrapper::addImage(const CString& text, const CTextRun& run)
{
    const CTextImageName name = CTextImageName::parse(text.substring(run.begin, run.end - run.begin));
    const CImage* const image = imageFinder_ ? imageFinder_(name) : nullptr;
    if (!image) {
        addCharacters(text, run);
        return;
    }
    CTextGlyph& glyph = glyphs_.emplace_back();
    glyph.image = image;
    glyph.color = imageColor(name, run.style);
    glyph.source = run.begin;
    glyph.advance = image->getWidth();
}

std::uint16_t CTextWrapper::imageColor(const CTextImageName& name, const CTextStyle& style)
{
    if (name.color.isEmpty()) {
        return style.color;
    }
    const auto found = std::find(imageColors_.begin(), imageColors_.end(), name.color);
    const auto index = static_cast<std::size_t>(found - imageColors_.begin());
    if (found == imageColors_.end()) {
        imageColors_.push_back(name.color);
    }
    return static_cast<std::uint16_t>(CTextColorSource::kOwnColors + index);
}

// --- lines

void CTextWrapper::wrap(std::optional<double> width)
{
    lines_.clear();
    height_ = 0;
    double widest = 0.0;
    for (CTextParagraph& paragraph : paragraphs_) {
        if (&paragraph != &paragraphs_.front()) {
            height_ += paragraphSpacing_;
        }
        paragraph.top = height_;
        paragraph.beginLine = lines_.size();
        wrapParagraph(paragraph, width);
        paragraph.endLine = lines_.size();
        const std::int32_t spare = std::max(0, paragraphHeight_ - (height_ - paragraph.top));
        height_ += spare;
        paragraph.height = height_ - paragraph.top;
        for (std::size_t i = paragraph.beginLine; i < paragraph.endLine; ++i) {
            lines_[i].top += spare / 2;
            lines_[i].paragraph = static_cast<std::size_t>(&paragraph - paragraphs_.data());
            widest = std::max(widest, lines_[i].width);
        }
    }
    width_ = wholePixels(widest);
}

void CTextWrapper::shorten(double width)
{
    const CImageLayer* const dot = font_.isLoaded() ? font_.findGlyph(CFontStyle::kRegular, u'.') : nullptr;
    if (!dot) {
        return;
    }
    const double dots = kDots * dot->advance;
    double widest = 0.0;
    for (CTextLine& line : lines_) {
        if (line.width > width) {
            const auto fits = [&](const CTextGlyph& last) {
                return last.pen + last.advance + dots <= width && last.kind != CTextGlyph::Kind::kBlank;
            };
            while (line.end > line.begin && !fits(glyphs_[line.end - 1])) {
                --line.end;
            }
            const CTextGlyph* const last = line.end > line.begin ? &glyphs_[line.end - 1] : nullptr;
            line.width = (last ? last->pen + last->advance : 0.0) + dots;
            line.isShortened = true;
        }
        widest = std::max(widest, line.width);
    }
    width_ = wholePixels(widest);
}

void CTextWrapper::wrapParagraph(CTextParagraph& paragraph, std::optional<double> width)
{
    const double limit = width ? *width + kTolerancePx : kPixelLimit;
    std::size_t begin = paragraph.beginGlyph;
    std::size_t i = begin;
    std::size_t breakEnd = kNoBreak; // the line's end and the next one's begin, if it breaks there
    std::size_t breakNext = kNoBreak;
    double pen = 0.0;
    const auto endLine = [&](std::size_t end, std::size_t next, bool isForced) {
        height_ += begin > paragraph.beginGlyph ? lineSpacing_ : 0;
        addLine(begin, end);
        if (isJustified_ && width && !isForced) {
            justify(lines_.back(), *width);
        }
        begin = i = next;
        breakEnd = breakNext = kNoBreak;
        pen = 0.0;
    };
    while (i < paragraph.endGlyph) {
        const CTextGlyph& glyph = glyphs_[i];
        const bool isBlank = glyph.kind == CTextGlyph::Kind::kBlank;
        if (glyph.kind == CTextGlyph::Kind::kLineBreak) {
            endLine(i, i + 1, true);
            continue;
        }
        if (pen + glyph.advance > limit && !isBlank && i > begin) {
            if (breakEnd != kNoBreak) {
                endLine(breakEnd, breakNext, false);
            } else {
                endLine(i, i, false);
            }
            continue;
        }
        // Blanks in a row are one break. What a line begins with is none: it would leave an empty line, or
        // take the sign from a number.
        const bool isFirst = i == begin;
        const bool isAfterBlank = !isFirst && glyphs_[i - 1].kind == CTextGlyph::Kind::kBlank;
        if (isBlank && !isFirst) {
            breakEnd = isAfterBlank && breakNext == i ? breakEnd : i;
            breakNext = i + 1;
        } else if (glyph.kind == CTextGlyph::Kind::kHyphen && !isFirst && !isAfterBlank) {
            breakEnd = breakNext = i + 1;
        }
        pen += glyph.advance;
        ++i;
    }
    endLine(paragraph.endGlyph, paragraph.endGlyph, true);
}

void CTextWrapper::addLine(std::size_t begin, std::size_t end)
{
    CTextLine& line = lines_.emplace_back();
    line.begin = begin;
    line.end = end;
    line.top = height_;
    line.height = font_.getLineHeight();
    for (std::size_t i = begin; i < end; ++i) {
        CTextGlyph& glyph = glyphs_[i];
        glyph.pen = line.width;
        line.width += glyph.advance;
        if (glyph.image) {
            line.height = std::max(line.height, glyph.image->getHeight());
        }
    }
    line.baseline = font_.getBaseline() + (line.height - font_.getLineHeight()) / 2;
    height_ += line.height;
}

void CTextWrapper::justify(const CTextLine& line, double width)
{
    const auto isBlank = [](const CTextGlyph& glyph) { return glyph.kind == CTextGlyph::Kind::kBlank; };
    const auto first = glyphs_.begin() + static_cast<std::ptrdiff_t>(line.begin);
    const auto last = glyphs_.begin() + static_cast<std::ptrdiff_t>(line.end);
    const auto blanks = std::count_if(first, last, isBlank);
    const double spare = width - line.width;
    if (blanks == 0 || spare <= 0.0) {
        return;
    }
    double shift = 0.0;
    for (auto glyph = first; glyph != last; ++glyph) {
        glyph->pen += shift;
        shift += isBlank(*glyph) ? spare / static_cast<double>(blanks) : 0.0;
    }
    lines_.back().width = width;
}

// --- measures

std::optional<std::size_t> CTextWrapper::findParagraph(double y) const
{
    for (std::size_t i = 0; i < paragraphs_.size(); ++i) {
        const CTextParagraph& paragraph = paragraphs_[i];
        if (y >= paragraph.top && y < paragraph.top + paragraph.height) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<CTextWrapper::Span> CTextWrapper::getChange() const
{
    if (!wasOneLine_ || !isOneLine()) {
        return std::nullopt;
    }
    const auto isSame = [](const CTextGlyph& a, const CTextGlyph& b) {
        return a.looksLike(b) && a.pen == b.pen;
    };
    const std::size_t shorter = std::min(glyphs_.size(), glyphsBefore_.size());
    std::size_t first = 0;
    while (first < shorter && isSame(glyphs_[first], glyphsBefore_[first])) {
        ++first;
    }
    std::size_t endBehind = 0; // glyphs that follow what has changed
    while (endBehind < shorter - first && isSame(glyphs_[glyphs_.size() - 1 - endBehind],
                                                 glyphsBefore_[glyphsBefore_.size() - 1 - endBehind])) {
        ++endBehind;
    }
    const auto endOf = [&](const std::vector<CTextGlyph>& glyphs) {
        const std::size_t count = glyphs.size() - endBehind;
        return count == 0 ? 0.0 : glyphs[count - 1].pen + glyphs[count - 1].advance;
    };
    const double end = std::max(endOf(glyphs_), endOf(glyphsBefore_));
    return Span{first < shorter                ? std::min(glyphs_[first].pen, glyphsBefore_[first].pen)
                : first < glyphs_.size()       ? glyphs_[first].pen
                : first < glyphsBefore_.size() ? glyphsBefore_[first].pen
                                               : end,
                end};
}

// --- drawing

void CTextWrapper::drawLine(CDrawContext& context, const CTextLine& line, const CPoint& point,
                            std::size_t clip, const CTextColorSource& colors) const
{
    drawGlyphs(context, line, line.begin, line.end, point, clip, colors);
    if (!line.isShortened) {
        return;
    }
    const CImageLayer& dot = *font_.findGlyph(CFontStyle::kRegular, u'.');
    for (int i = 1; i <= kDots; ++i) {
        const double x = point.x + line.width - (kDots + 1 - i) * dot.advance;
        context.drawGlyph(dot, {x, point.y + line.baseline}, clip, colors.getTextColor(0), 1.0);
    }
}

// As high as a capital.
void CTextWrapper::drawMissing(CDrawContext& context, const CPoint& baseline, std::size_t clip,
                               const CPaletteColor& color) const
{
    const double height = font_.getCapitalHeight();
    const double width = font_.getMissingAdvance() - 2.0;
    const double left = std::round(baseline.x) + 1.0;
    const double top = baseline.y - height;
    context.drawFilledRect(color, {left, top, width, 1.0}, clip, 1.0);
    context.drawFilledRect(color, {left, baseline.y - 1.0, width, 1.0}, clip, 1.0);
    context.drawFilledRect(color, {left, top + 1.0, 1.0, height - 2.0}, clip, 1.0);
    context.drawFilledRect(color, {left + width - 1.0, top + 1.0, 1.0, height - 2.0}, clip, 1.0);
}

void CTextWrapper::drawGlyphs(CDrawContext& context, const CTextLine& line, std::size_t begin,
                              std::size_t end, const CPoint& point, std::size_t clip,
                              const CTextColorSource& colors) const
{
    for (std::size_t i = begin; i < end; ++i) {
        const CTextGlyph& glyph = glyphs_[i];
        const double x = point.x + glyph.pen;
        if (glyph.image) {
            const double y = point.y + (line.height - glyph.image->getHeight()) / 2;
            for (const CImageLayer& layer : glyph.image->layers) {
                context.drawGlyph(layer, {x, y}, clip, colors.getTextColor(glyph.color), 1.0);
            }
        } else if (glyph.layer) {
            context.drawGlyph(*glyph.layer, {x, point.y + line.baseline - glyph.rise}, clip,
                              colors.getTextColor(glyph.color), 1.0);
        } else if (glyph.isMissing) {
            drawMissing(context, {x, point.y + line.baseline - glyph.rise}, clip,
                        colors.getTextColor(glyph.color));
        }
    }
}

} // namespace qel
