// The CLIPBOARD selection, as owner and as reader.
#pragma once

#include "CSystemClipboard.h"
#include "CXcbConnection.h"

#include <cstdint>
#include <optional>
#include <string>

namespace qel::platform {

// Works through a window of its own that is never shown. Reads UTF8_STRING, else STRING, at once or in parts
// (INCR); offers UTF8_STRING, TEXT, text/plain and STRING. A text handed out fits into one request, which may
// be megabytes long.
class CXcbClipboard : public CSystemClipboard
{
public:
    explicit CXcbClipboard(CXcbConnection& connection) : connection_(connection) {}

    void open();

    void setText(const std::string& text) override;
    void requestText(TextHandler handler) override;

    // True for an event that was the clipboard's.
    bool handle(const xcb_generic_event_t& event);
    void checkTimeout();
    void setEventTime(xcb_timestamp_t time) { eventTime_ = time; }

private:
    void convert(xcb_atom_t target);
    void answer(const xcb_selection_request_event_t& request);
    bool writeTarget(const xcb_selection_request_event_t& request, xcb_atom_t property);
    void takeNotify(const xcb_selection_notify_event_t& notify);
    void readProperty();
    void takeProperty(const xcb_get_property_reply_t* reply);
    void finish(const std::optional<std::string>& text);
    std::string toUtf8(const std::string& bytes, xcb_atom_t type) const;

    CXcbConnection& connection_;
    xcb_window_t window_ = 0;
    xcb_timestamp_t eventTime_ = 0;

    std::optional<std::string> offered_; // while the selection is ours
    xcb_timestamp_t offeredTime_ = 0;

    TextHandler handler_;        // not empty: a request is under way
    unsigned requestNumber_ = 0; // of the request that an answer belongs to
    xcb_atom_t target_ = 0;
    bool isInParts_ = false;
    std::string received_;
    xcb_atom_t receivedType_ = 0;
    double deadlineSec_ = 0.0;
};

} // namespace qel::platform
