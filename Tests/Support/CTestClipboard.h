// Another program to exchange texts with, by the clipboard.
#pragma once

#include "CTestXClient.h"

#include <algorithm>
#include <functional>
#include <string>

namespace qel::test {

// A program that owns the clipboard and hands its text out as it is asked, in parts if it is long.
class CTextOwner
{
public:
    CTextOwner(CTestXClient& client, std::string text, xcb_atom_t type, std::size_t partBytes)
        : client_(client), text_(std::move(text)), type_(type), partBytes_(partBytes),
          window_(client.makeWindow(800, 700, 10, 10))
    {
        xcb_set_selection_owner(client_.get(), window_, client_.atom("CLIPBOARD"), XCB_CURRENT_TIME);
        client_.sync();
    }

    void run()
    {
        while (xcb_generic_event_t* event = xcb_poll_for_event(client_.get())) {
            const XPtr<xcb_generic_event_t> owned(event);
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

    CTestXClient& client_;
    const std::string text_;
    const xcb_atom_t type_;
    const std::size_t partBytes_;
    const xcb_window_t window_;
    xcb_window_t requestor_ = 0;
    xcb_atom_t property_ = 0;
    std::size_t sent_ = 0;
};

// What a program that pastes gets, asked for as `target`; "refused" where it gets nothing. `wait` lets the
// owner run until the condition holds.
inline std::string readClipboard(CTestXClient& client, xcb_atom_t target,
                                 const std::function<void(const std::function<bool()>&)>& wait)
{
    const xcb_window_t reader = client.makeWindow(800, 700, 10, 10);
    const xcb_atom_t property = client.atom("READ");
    xcb_convert_selection(client.get(), reader, client.atom("CLIPBOARD"), target, property, XCB_CURRENT_TIME);
    XPtr<xcb_selection_notify_event_t> notify;
    wait([&] {
        notify = client.next<xcb_selection_notify_event_t>(XCB_SELECTION_NOTIFY);
        return notify != nullptr;
    });
    std::string text = "refused";
    if (notify && notify->property) {
        const XPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            client.get(),
            xcb_get_property(client.get(), 1, reader, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1000),
            nullptr));
        text.assign(static_cast<const char*>(xcb_get_property_value(reply.get())),
                    static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    }
    client.destroyWindow(reader);
    return text;
}

} // namespace qel::test
