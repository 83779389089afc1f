#include "CTestClipboard.h"
#include "WindowFixture.h"

#include <optional>

namespace qel::platform {

TEST_F(WindowFixture, ClipboardTakesTextsOfOthers)
{
    std::string longText;
    while (longText.size() < 300000) {
        longText += "\xC3\xA9\xC3\x9F\xCE\xA9 ";
    }
    const struct
    {
        std::string text;
        xcb_atom_t type;
        std::size_t partBytes;
        std::string expected;
    } cases[] = {
        {"\xCE\xA9 dB", client.atom("UTF8_STRING"), 1000, "\xCE\xA9 dB"},
        {"\xE9t\xE9", XCB_ATOM_STRING, 1000, "\xC3\xA9t\xC3\xA9"},
        {longText, client.atom("UTF8_STRING"), 65536, longText},
        {std::string("a\xFF\0b", 4), client.atom("UTF8_STRING"), 1000,
         "a\xEF\xBF\xBD"
         "b"},
        {"", client.atom("UTF8_STRING"), 1000, ""},
    };
    for (const auto& one : cases) {
        test::CTextOwner owner(client, one.text, one.type, one.partBytes);
        std::optional<std::string> got;
        display->clipboard().requestText([&](const auto& text) { got = text.value_or("none"); });
        EXPECT_TRUE(idleUntil([&] {
            owner.run();
            return got.has_value();
        }));
        EXPECT_TRUE(got == one.expected) << got.value_or("no answer").substr(0, 40);
    }
    // An owner that does not answer, and one that goes.
    bool isAnswered = false;
    {
        test::CTestXClient mute;
        test::CTextOwner owner(mute, "text", XCB_ATOM_STRING, 1000);
        display->clipboard().requestText([&](const auto& text) { isAnswered = !text; });
        EXPECT_TRUE(idleUntil([&] { return isAnswered; }));
    }
    isAnswered = false;
    display->clipboard().requestText([&](const auto& text) { isAnswered = !text; });
    EXPECT_TRUE(idleUntil([&] { return isAnswered; }));
}

TEST_F(WindowFixture, ClipboardGivesTextsToOthers)
{
    display->clipboard().setText("\xC3\xA9 \xCE\xA9");
    display->flush();
    const auto read = [&](xcb_atom_t target) {
        return test::readClipboard(client, target, [&](const auto& condition) { idleUntil(condition); });
    };
    EXPECT_EQ(read(client.atom("UTF8_STRING")), "\xC3\xA9 \xCE\xA9");
    EXPECT_EQ(read(XCB_ATOM_STRING), "\xE9 ?");
    EXPECT_EQ(read(client.atom("TARGETS")).size(), 6 * sizeof(xcb_atom_t));
    EXPECT_EQ(read(client.atom("image/png")), "refused");
    std::optional<std::string> own;
    display->clipboard().requestText([&](const auto& text) { own = text; });
    EXPECT_TRUE(idleUntil([&] { return own.has_value(); }));
    EXPECT_EQ(own, "\xC3\xA9 \xCE\xA9");
}

} // namespace qel::platform
