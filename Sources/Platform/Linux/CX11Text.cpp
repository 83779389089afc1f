// Decoding and wrapping for server fonts.
#include "CX11Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qel::platform {

namespace {

// Reads one character and moves `at` behind it; a malformed byte counts as one '?'.
std::uint32_t nextCharacter(const std::string& utf8, std::size_t& at)
{
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(utf8[index]); };
    const unsigned lead = byte(at++);
    if (lead < 0x80) {
        return lead;
    }
    const unsigned extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || extra > utf8.size() - at) {
        return '?';
    }
    std::uint32_t character = lead & (0x3Fu >> extra);
    for (unsigned i = 0; i < extra; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            return '?';
        }
        character = (character << 6) | (byte(at + i) & 0x3Fu);
    }
    at += extra;
    return character <= 0xFFFF ? character : '?';
}

bool isBlank(const XChar2b& character)
{
    return character.byte1 == 0 && character.byte2 == ' ';
}

int widthOf(const X11Library& x11, XFontStruct* font, const X11Line& text, std::size_t begin, std::size_t end)
{
    return x11.XTextWidth16(font, text.data() + begin, static_cast<int>(end - begin));
}

} // namespace

X11Line x11Text(const std::string& utf8)
{
    X11Line line;
    for (std::size_t at = 0; at < utf8.size();) {
        const std::uint32_t character = nextCharacter(utf8, at);
        const std::uint32_t shown = character == '\t' ? ' ' : character;
        line.push_back({static_cast<unsigned char>(shown >> 8), static_cast<unsigned char>(shown & 0xFF)});
    }
    return line;
}

std::vector<X11Line> wrapX11Text(const X11Library& x11, XFontStruct* font, const std::string& utf8, int width)
{
    std::vector<X11Line> lines;
    for (std::size_t start = 0; start <= utf8.size();) {
        const std::size_t newline = std::min(utf8.find('\n', start), utf8.size());
        const X11Line text = x11Text(utf8.substr(start, newline - start));
        start = newline + 1;
        std::size_t begin = 0;
        do {
            std::size_t end = begin;
            std::size_t lastBlank = begin;
            while (end < text.size() && (end == begin || widthOf(x11, font, text, begin, end + 1) <= width)) {
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

} // namespace qel::platform
