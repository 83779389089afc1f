// Texts that are shown as they are.
#include "LiteralText.h"

namespace qel {

namespace {

// Far from where fonts for private use begin. Behind it stand the characters of ASCII.
constexpr char16_t kLiteral = 0xF700;

bool isSyntax(char16_t character)
{
    return character == u'[' || character == u']' || character == u'{' || character == u'}';
}

} // namespace

char16_t plainCharacter(char16_t literal)
{
    const auto plain = static_cast<char16_t>(literal - kLiteral);
    return isSyntax(plain) ? plain : literal;
}

CString literalText(const CString& plain)
{
    CString literal;
    for (std::size_t i = 0; i < plain.length(); ++i) {
        const char16_t character = plain[i];
        literal.append(isSyntax(character) ? static_cast<char16_t>(kLiteral + character) : character);
    }
    return literal;
}

CString plainText(const CString& literal)
{
    CString plain;
    for (std::size_t i = 0; i < literal.length(); ++i) {
        plain.append(plainCharacter(literal[i]));
    }
    return plain;
}

} // namespace qel
