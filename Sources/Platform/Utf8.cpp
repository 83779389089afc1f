// Decoding and encoding of UTF-8.
#include "Utf8.h"

#include <cstddef>

namespace qel::platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isCharacter(char32_t character)
{
    return character < 0xD800 || (character > 0xDFFF && character <= 0x10FFFF);
}

// Reads one character and moves `at` behind it.
char32_t next(std::string_view text, std::size_t& at)
{
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned lead = byte(at++);
    if (lead < 0x80) {
        return lead;
    }
    const unsigned extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || extra > text.size() - at) {
        return kReplacement;
    }
    char32_t character = lead & (0x3Fu >> extra);
    for (unsigned i = 0; i < extra; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            return kReplacement;
        }
        character = (character << 6) | (byte(at + i) & 0x3Fu);
    }
    constexpr char32_t kLeastOfLength[] = {0, 0x80, 0x800, 0x10000};
    if (character < kLeastOfLength[extra] || !isCharacter(character)) {
        return kReplacement;
    }
    at += extra;
    return character;
}

} // namespace

std::u32string fromUtf8(std::string_view text)
{
    std::u32string characters;
    characters.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        characters += next(text, at);
    }
    return characters;
}

void appendUtf8(std::string& text, char32_t character)
{
    const char32_t code = isCharacter(character) ? character : kReplacement;
    const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | (code >> 12));
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

} // namespace qel::platform
