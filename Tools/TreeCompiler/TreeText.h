// The characters that a tree may hold.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qel::tools {

// Strict UTF-8 to code points: the next one at `position`, which moves on; nothing if the bytes are malformed
// (overlong forms and surrogates are), and `position` then stays.
std::optional<char32_t> nextCodePoint(std::string_view utf8, std::size_t& position);
void appendUtf8(std::string& out, char32_t codePoint);

// Why the loader would not read this value as it stands ("holds a NUL character, ..."); empty if it would.
std::string valueProblem(std::string_view utf8);

// Tags, names and keys are one byte a character. Nothing if a character is above U+00FF, is NUL, or the text
// is not UTF-8.
std::optional<std::string> latin1FromUtf8(std::string_view utf8);
std::string utf8FromLatin1(std::string_view latin1);

// A name that stands in XML without an escape. Only plain letters: enough for all tags, and every XML program
// agrees.
bool isPlainXmlName(std::string_view text);
// Element names with a meaning of their own.
bool isReservedElement(std::string_view name);

} // namespace qel::tools
