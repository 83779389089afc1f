// The texts of placement attributes, read into numbers.
#include "LayoutSyntax.h"

#include "NumberSyntax.h"
#include "Trace.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr const char* kPlacements[] = {"inline", "full",       "top",        "bottom",
                                       "left",   "right",      "overlay",    "window-overlay",
                                       "match",  "scroller-h", "scroller-v", "scroller-p"};

double number(const CString& text)
{
    return parseReal(text).value_or(0.0);
}

CViewSize numberOrShare(const CString& text, double scale)
{
    const std::size_t length = text.length();
    if (length > 0 && text[length - 1] == u'%') {
        const double share = number(text.substring(0, length - 1)) / 100.0;
        return {CViewSize::Form::kShare, std::clamp(share, 0.0, 1.0)};
    }
    return {CViewSize::Form::kNumber, parsePixels(text, scale)};
}

// Halves away from zero.
double rounded(double value)
{
    const double magnitude = std::floor(std::abs(value) + 0.5);
    return value < 0.0 ? -magnitude : magnitude;
}

struct BorderToken
{
    bool isAdded = false;
    bool left = false;
    bool top = false;
    bool right = false;
    bool bottom = false;
    CString number;
};

BorderToken splitFlags(const CString& word)
{
    BorderToken token;
    std::size_t i = 0;
    for (bool isFlag = true; isFlag && i < word.length();) {
        const char16_t c = word[i];
        switch (c >= u'a' && c <= u'z' ? c - u'a' + u'A' : c) {
        case u'*':
            token.isAdded = true;
            break;
        case u'L':
            token.left = true;
            break;
        case u'T':
            token.top = true;
            break;
        case u'R':
            token.right = true;
            break;
        case u'B':
            token.bottom = true;
            break;
        default:
            isFlag = false;
            break;
        }
        i += isFlag ? 1 : 0;
    }
    if (!token.left && !token.top && !token.right && !token.bottom) {
        token.left = token.top = token.right = token.bottom = true;
    }
    i += i < word.length() && word[i] == u'+' ? 1 : 0;
    token.number = word.substring(i);
    return token;
}

double borderNumber(const CString& word, const CString& text, const CString& context)
{
    bool hasDigit = false;
    for (std::size_t i = 0; i < text.length(); ++i) {
        const bool isDigit = text[i] >= u'0' && text[i] <= u'9';
        if (!isDigit && text[i] != u'.' && text[i] != u'-') {
            trace("Invalid border syntax: '" + word + "' (2)", context);
            return 0.0;
        }
        hasDigit = hasDigit || isDigit;
    }
    if (!hasDigit) {
        trace("Invalid border syntax: '" + word + "' (1)", context);
        return 0.0;
    }
    return number(text);
}

} // namespace

double parsePixels(const CString& text, double scale)
{
    return number(text) * scale;
}

CViewSize parseMinSize(const CString& text, double scale)
{
    if (text == "compact") {
        return {CViewSize::Form::kCompact, 0.0};
    }
    if (text == "balanced") {
        return {CViewSize::Form::kBalanced, 0.0};
    }
    return numberOrShare(text, scale);
}

CViewSize parseViewSize(const CString& text, double scale)
{
    return text == "full" ? CViewSize{CViewSize::Form::kShare, 1.0} : parseMinSize(text, scale);
}

CViewBorder parseBorder(const CString& text, double scale, bool isRounded, const CString& context)
{
    CViewBorder border;
    for (const CString& word : text.splitWords()) {
        const BorderToken token = splitFlags(word);
        const double scaled = borderNumber(word, token.number, context) * scale;
        const double value = isRounded ? rounded(scaled) : scaled;
        const auto put = [&](bool isChosen, double& side) {
            if (isChosen) {
                side = (token.isAdded ? side : 0.0) + value;
            }
        };
        put(token.left, border.left);
        put(token.top, border.top);
        put(token.right, border.right);
        put(token.bottom, border.bottom);
    }
    return border;
}

std::optional<CPlacement> parsePlacement(const CString& text)
{
    const auto name = std::ranges::find_if(kPlacements, [&](const char* known) { return text == known; });
    if (name == std::end(kPlacements)) {
        return std::nullopt;
    }
    return static_cast<CPlacement>(name - kPlacements + 1);
}

std::optional<CAlignment> parseAlignment(const CString& text, CAxis axis)
{
    if (text == (axis == CAxis::kX ? "left" : "top")) {
        return CAlignment::kStart;
    }
    if (text == "center") {
        return CAlignment::kCenter;
    }
    if (text == (axis == CAxis::kX ? "right" : "bottom")) {
        return CAlignment::kEnd;
    }
    return std::nullopt;
}

} // namespace qel
