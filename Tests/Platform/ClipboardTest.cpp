#include "WindowFixture.h"

#include <algorithm>
#include <optional>

namespace qel::platform {

namespace {

// A program that owns the clipboard and hands its text out as it is asked, in parts if it is long.
class CTextOwner
{
public:
    CTextOwner(test::CTestXClient& client, std::string text, xcb_atom_t type, std::size_t partBytes)
        : client_(client), text_(std::move(text)), type_(type), partBytes_(partBytes),
          window_(client.makeWindow(800, 700, 10, 10))
    {
        xcb_set_selection_owner(client_.get(), window_, client_.atom("CLIPBOARD"), XCB_CURRENT_TIME);
        client_.sync();
    }

    void run()
    {
        while (xcb_generic_event_t* event = xcb_poll_for_event(client_.get())) {
            const test::XPtr<xcb_generic_event_t> owned(event);
            const int type = event->response_type & 0x7F;
            if (type == XCB_SELECTION_REQUEST) {
                answer(*reinterpret_cast<xcb_selection_request_event_t*>(event));
            } else if (type == XCB_PROPERTY_NOTIFY && property_ &&
                       reinterpret_cast<xcb_property_notify_event_t*>(event)->state == XCB_PROPERTY_DELETE &&
                       reinterpret_cast<xcb_property_notify_event_t*>(event)->atom == property_) {
                writePart();
            }
        }
    }

private:
    void answer(const xcb_selection_request_event_t& request)
    {
        xcb_selection_notify_event_t notify{};
        notify.response_type = XCB_SELECTION_NOTIFY;
        notify.requestor = request.requestor;
        notify.selection = request.selection;
        notify.target = request.target;
        notify.time = request.time;
        if (request.target == type_) {
            notify.property = request.property;
            if (text_.size() <= partBytes_) {
                write(request.requestor, request.property, type_, text_);
            } else {
                requestor_ = request.requestor;
                property_ = request.property;
                const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
                xcb_change_window_attributes(client_.get(), requestor_, XCB_CW_EVENT_MASK, &mask);
                const auto size = static_cast<std::uint32_t>(text_.size());
                xcb_change_property(client_.get(), XCB_PROP_MODE_REPLACE, requestor_, property_,
                                    client_.atom("INCR"), 32, 1, &size);
            }
        }
        xcb_send_event(client_.get(), 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
        xcb_flush(client_.get());
    }
    void writePart()
    {
        const std::string part = text_.substr(std::min(sent_, text_.size()), partBytes_);
        sent_ += part.size();
        write(requestor_, property_, type_, part);
        property_ = part.empty() ? 0 : property_;
        xcb_flush(client_.get());
    }
    void write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& text)
    {
        xcb_change_property(client_.get(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }

    test::CTestXClient& client_;
    const std::string text_;
    const xcb_atom_t type_;
    const std::size_t partBytes_;
    const xcb_window_t window_;
    xcb_window_t requestor_ = 0;
    xcb_atom_t property_ = 0;
    std::size_t sent_ = 0;
};

} // namespace

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
        CTextOwner owner(client, one.text, one.type, one.partBytes);
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
        CTextOwner owner(mute, "text", XCB_ATOM_STRING, 1000);
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
    const xcb_window_t reader = client.makeWindow(800, 700, 10, 10);
    const auto read = [&](xcb_atom_t target) {
        const xcb_atom_t property = client.atom("READ");
        xcb_convert_selection(client.get(), reader, client.atom("CLIPBOARD"), target, property,
                              XCB_CURRENT_TIME);
        test::XPtr<xcb_selection_notify_event_t> notify;
        EXPECT_TRUE(idleUntil([&] {
            notify = client.next<xcb_selection_notify_event_t>(XCB_SELECTION_NOTIFY);
            return notify != nullptr;
        }));
        if (!notify || !notify->property) {
            return std::string("refused");
        }
        const test::XPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            client.get(),
            xcb_get_property(client.get(), 1, reader, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1000),
            nullptr));
        return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                           static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
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
