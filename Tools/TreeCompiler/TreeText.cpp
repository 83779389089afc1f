// The characters that a tree may hold.
#include "TreeCompiler/TreeText.h"

#include <algorithm>
#include <array>

namespace qel::tools {

namespace {

bool isSurrogate(char32_t c)
{
    return c >= 0xD800 && c <= 0xDFFF;
}

} // namespace

std::optional<char32_t> nextCodePoint(std::string_view utf8, std::size_t& position)
{
    const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(utf8[i]); };
    const std::uint8_t lead = byteAt(position);
    if (lead < 0x80) {
        ++position;
        return lead;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    if (lead < 0xC0 || lead > 0xF4 || utf8.size() - position < length) {
        return std::nullopt;
    }
    char32_t codePoint = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(position + i) & 0xC0) != 0x80) {
            return std::nullopt;
        }
        codePoint = (codePoint << 6) | (byteAt(position + i) & 0x3Fu);
    }
    if (codePoint < kSmallest[length] || codePoint > 0x10FFFF || isSurrogate(codePoint)) {
        return std::nullopt;
    }
    position += length;
    return codePoint;
}

void appendUtf8(std::string& out, char32_t c)
{
    const auto push = [&](char32_t bits) { out.push_back(static_cast<char>(bits)); };
    if (c < 0x80) {
        push(c);
    } else if (c < 0x800) {
        push(0xC0 | (c >> 6));
        push(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        push(0xE0 | (c >> 12));
        push(0x80 | ((c >> 6) & 0x3F));
        push(0x80 | (c & 0x3F));
    } else {
        push(0xF0 | (c >> 18));
        push(0x80 | ((c >> 12) & 0x3F));
        push(0x80 | ((c >> 6) & 0x3F));
        push(0x80 | (c & 0x3F));
    }
}

std::string valueProblem(std::string_view utf8)
{
    for (std::size_t i = 0; i < utf8.size();) {
        const auto codePoint = nextCodePoint(utf8, i);
        if (!codePoint) {
            return "is not valid UTF-8";
        }
        if (*codePoint == 0) {
            return "holds a NUL character, where the loader would end it";
        }
        if (*codePoint > 0xFFFF) {
            return "holds a character above U+FFFF, which the loader would cut to 16 bits";
        }
    }
    return "";
}

std::optional<std::string> latin1FromUtf8(std::string_view utf8)
{
    std::string latin1;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto codePoint = nextCodePoint(utf8, i);
        if (!codePoint || *codePoint == 0 || *codePoint > 0xFF) {
            return std::nullopt;
        }
        latin1.push_back(static_cast<char>(*codePoint));
    }
    return latin1;
}

std::string utf8FromLatin1(std::string_view latin1)
{
    std::string utf8;
    for (const char c : latin1) {
        appendUtf8(utf8, static_cast<std::uint8_t>(c));
    }
    return utf8;
}

bool isPlainXmlName(std::string_view text)
{
    const auto isStart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
    };
    const auto isInner = [&](char c) { return isStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; };
    return !text.empty() && isStart(text.front()) && std::ranges::all_of(text, isInner);
}

bool isReservedElement(std::string_view name)
{
    constexpr std::string_view kReserved[] = {"tree",    "template", "node",  "attr",
                                              "include", "define",   "extend"};
    return std::ranges::find(kReserved, name) != std::end(kReserved);
}

} // namespace qel::tools
