// Markup in texts.
#include "TextMarkup.h"

namespace qel {

namespace {

constexpr char16_t kOpen = u'[';
constexpr char16_t kClose = u']';
constexpr char16_t kLineFeed = u'\n';
constexpr std::string_view kImageTag = "IMG=";

// The tags that switch something on and, with a slash in front, off.
struct StyleTag
{
    std::string_view name;
    void (*apply)(CTextStyle& style, bool isOn);
};
constexpr StyleTag kStyleTags[] = {
    {"B", [](CTextStyle& style, bool isOn) { style.isBold = isOn; }},
    {"I", [](CTextStyle& style, bool isOn) { style.isItalic = isOn; }},
    {"C1", [](CTextStyle& style, bool isOn) { style.color = isOn ? 1 : 0; }},
    {"C2", [](CTextStyle& style, bool isOn) { style.color = isOn ? 2 : 0; }},
    {"SUP", [](CTextStyle& style, bool isOn) { style.isSuperscript = isOn; }},
};

bool matches(const CString& text, std::size_t begin, std::size_t end, std::string_view name)
{
    bool isSame = end - begin == name.size();
    for (std::size_t i = 0; isSame && i < name.size(); ++i) {
        isSame = text[begin + i] == static_cast<unsigned char>(name[i]);
    }
    return isSame;
}

} // namespace

CFontStyle CTextStyle::getFontStyle() const
{
    if (isSuperscript) {
        return CFontStyle::kSuperscript;
    }
    if (isBold) {
        return isItalic ? CFontStyle::kBoldItalic : CFontStyle::kBold;
    }
    return isItalic ? CFontStyle::kItalic : CFontStyle::kRegular;
}

CTextMarkup::CTextMarkup(const CString& text, char16_t separator) : text_(text), separator_(separator) {}

bool CTextMarkup::isParagraphEnd(char16_t character) const
{
    return character == kLineFeed || (separator_ != 0 && character == separator_);
}

std::size_t CTextMarkup::readTag(std::size_t begin, CTextRun& run)
{
    const std::size_t close = text_.find(kClose, begin);
    if (close == CString::kNone) {
        return begin;
    }
    const std::size_t name = begin + 1;
    run = {CTextRun::Kind::kText, style_, begin, close + 1};
    if (matches(text_, name, close, "BR")) {
        run.kind = CTextRun::Kind::kLineBreak;
        return close + 1;
    }
    if (close - name > kImageTag.size() && matches(text_, name, name + kImageTag.size(), kImageTag)) {
        run.kind = CTextRun::Kind::kImage;
        return close + 1;
    }
    const bool isOn = text_[name] != u'/';
    for (const StyleTag& tag : kStyleTags) {
        if (matches(text_, isOn ? name : name + 1, close, tag.name)) {
            tag.apply(style_, isOn);
            return close + 1;
        }
    }
    return begin;
}

bool CTextMarkup::next(CTextRun& run)
{
    const std::size_t begin = position_;
    const CTextStyle style = style_;
    while (position_ < text_.length()) {
        const char16_t character = text_[position_];
        const bool isEnd = isParagraphEnd(character);
        if (isEnd && position_ == begin) {
            run = {CTextRun::Kind::kParagraph, style_, position_, position_ + 1};
            ++position_;
            return true;
        }
        if (isEnd) {
            break;
        }
        if (character != kOpen) {
            ++position_;
            continue;
        }
        const CTextStyle before = style_;
        CTextRun tag;
        const std::size_t behind = readTag(position_, tag);
        if (behind == position_) {
            ++position_; // a bracket like any other character
        } else if (position_ > begin) {
            style_ = before; // the text in front comes first, the tag with the next call
            break;
        } else {
            position_ = behind;
            if (tag.kind == CTextRun::Kind::kText) {
                return next(run);
            }
            run = tag;
            return true;
        }
    }
    run = {CTextRun::Kind::kText, style, begin, position_};
    return position_ > begin;
}

CTextImageName CTextImageName::parse(const CString& tag)
{
    CTextImageName name;
    const std::size_t begin = 1 + kImageTag.size();
    CString content = tag.substring(begin, tag.length() - begin - 1);
    if (const std::size_t colon = content.find(u':'); colon != CString::kNone) {
        name.color = content.substring(colon + 1);
        content = content.substring(0, colon);
    }
    if (const std::size_t hash = content.find(u'#'); hash != CString::kNone) {
        name.range = content.substring(hash + 1);
        content = content.substring(0, hash);
    }
    name.set = content;
    return name;
}

} // namespace qel
