// Decoding, wrapping and measuring for server fonts.
#include "XcbText.h"

#include "Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <numeric>

namespace qel::platform {

namespace {

bool isBlank(const xcb_char2b_t& character)
{
    return character.byte1 == 0 && character.byte2 == ' ';
}

} // namespace

XcbLine xcbText(const std::string& utf8)
{
    XcbLine line;
    for (const char32_t character : fromUtf8(utf8)) {
        const bool isShown = character <= 0xFFFF && character != 0xFFFD;
        const char32_t shown = character == U'\t' ? U' ' : isShown ? character : U'?';
        line.push_back({static_cast<std::uint8_t>(shown >> 8), static_cast<std::uint8_t>(shown & 0xFF)});
    }
    return line;
}

std::vector<XcbLine> wrapXcbText(const std::function<int(xcb_char2b_t)>& widthOf, const std::string& utf8,
                                 int width)
{
    std::vector<XcbLine> lines;
    for (std::size_t start = 0; start <= utf8.size();) {
        const std::size_t newline = std::min(utf8.find('\n', start), utf8.size());
        const XcbLine text = xcbText(utf8.substr(start, newline - start));
        start = newline + 1;
        std::size_t begin = 0;
        do {
            std::size_t end = begin;
            std::size_t lastBlank = begin;
            int used = 0;
            while (end < text.size() && (end == begin || used + widthOf(text[end]) <= width)) {
                used += widthOf(text[end]);
                lastBlank = isBlank(text[end]) ? end : lastBlank;
                ++end;
            }
            if (end < text.size() && lastBlank > begin) {
                end = lastBlank + 1;
            }
            lines.emplace_back(text.begin() + static_cast<std::ptrdiff_t>(begin),
                               text.begin() + static_cast<std::ptrdiff_t>(end));
            begin = end;
        } while (begin < text.size());
    }
    return lines;
}

bool CXcbFont::open(const char* name)
{
    const xcb_font_t font = xcb_generate_id(connection_.get());
    xcb_open_font(connection_.out(), font, static_cast<std::uint16_t>(std::strlen(name)), name);
    metrics_ = connection_.wait<xcb_query_font_reply_t>(xcb_query_font(connection_.out(), font));
    font_ = metrics_ ? font : 0;
    return font_ != 0;
}

// The measures are a table of rows by the first byte and columns by the second, left out when all are alike.
int CXcbFont::widthOf(xcb_char2b_t character) const
{
    const xcb_query_font_reply_t& metrics = *metrics_;
    const int count = xcb_query_font_char_infos_length(&metrics);
    if (count == 0) {
        return metrics.max_bounds.character_width;
    }
    const int columns = metrics.max_char_or_byte2 - metrics.min_char_or_byte2 + 1;
    const auto indexOf = [&](int row, int column) {
        const bool isInside = row >= metrics.min_byte1 && row <= metrics.max_byte1 &&
                              column >= metrics.min_char_or_byte2 && column <= metrics.max_char_or_byte2;
        const int index = (row - metrics.min_byte1) * columns + column - metrics.min_char_or_byte2;
        return isInside && index < count ? index : -1;
    };
    int index = indexOf(character.byte1, character.byte2);
    if (index < 0) {
        index = indexOf(metrics.default_char >> 8, metrics.default_char & 0xFF);
    }
    return index < 0 ? 0 : xcb_query_font_char_infos(&metrics)[index].character_width;
}

int CXcbFont::widthOf(const XcbLine& line) const
{
    return std::accumulate(line.begin(), line.end(), 0,
                           [this](int sum, xcb_char2b_t character) { return sum + widthOf(character); });
}

} // namespace qel::platform
