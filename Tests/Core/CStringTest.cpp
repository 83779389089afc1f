// The dual string: width changes, comparison across forms, UTF-8, and its memory.
#include "CString.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

const CString kEuro = CString(std::u16string_view(u"\u20ac"));

TEST(CString, KeepsItsTextWhereverItLives)
{
    // Around the inline room in both widths: growth, widening in place, copies and moves.
    for (std::size_t length : {0u, 1u, 23u, 24u, 25u, 47u, 48u, 49u, 97u, 5000u}) {
        for (bool wide : {false, true}) {
            CString text;
            for (std::size_t i = 0; i < length; ++i) {
                text += static_cast<char16_t>('a' + i % 26);
            }
            if (wide) {
                text += u'\u4e2d';
            }
            const CString copy = text;
            CString moved = std::move(text);
            EXPECT_EQ(moved, copy);
            EXPECT_TRUE(text.isEmpty()); // NOLINT: a moved-from string is empty and usable
            text = copy;
            moved = text;
            EXPECT_EQ(moved, copy);
            text.append(text);
            EXPECT_EQ(text, copy + copy);
            EXPECT_EQ(CString::fromUtf8(copy.toUtf8()), copy);
        }
    }
}

TEST(CString, DecodesUtf8Leniently)
{
    struct Case
    {
        const char* bytes;
        std::u16string_view characters;
    };
    const Case cases[] = {
        {"caf\xC3\xA9", u"caf\u00e9"},
        {"\xE2\x82\xAC", u"\u20ac"},
        {"ab\xC3", u"ab"}, // cut short: the rest is lost
        {"a\x80\xFF\xBF"
         "b",
         u"ab"},                         // stray lead bytes are skipped
        {"\xF0\x9F\x98\x80", u"\xF600"}, // above 0xFFFF: the low 16 bits stay
        {"\xC3(", u"\u00e8"},            // continuation bytes are not validated
        {"a\xC0\x80z", u"a"},            // a decoded zero ends the text
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CString::fromUtf8(c.bytes), CString(c.characters)) << c.bytes;
    }
    EXPECT_EQ(CString::fromUtf8(std::string_view("x\0y", 3)), CString("x"));
}

TEST(CString, WritesUtf8WithoutSurrogates)
{
    EXPECT_EQ(CString("\xe9").toUtf8(), "\xC3\xA9");
    EXPECT_EQ(kEuro.toUtf8(), "\xE2\x82\xAC");
    EXPECT_EQ(CString(std::u16string_view(u"a\xD800z")).toUtf8(), "az");
}

} // namespace
} // namespace qel
