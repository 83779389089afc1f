// UTF-8 and single characters.
#pragma once

#include <string>
#include <string_view>

namespace qel::platform {

// Each malformed byte becomes U+FFFD; surrogates, overlong forms and what lies beyond U+10FFFF are malformed.
std::u32string fromUtf8(std::string_view text);

// What is no Unicode character becomes U+FFFD.
void appendUtf8(std::string& text, char32_t character);

} // namespace qel::platform
