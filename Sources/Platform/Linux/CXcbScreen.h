// Monitors and the parts of them that windows may cover.
#pragma once

#include "CXcbConnection.h"
#include "SystemEvents.h"

#include <vector>

namespace qel::platform {

// Keeps what the server last told, so that a question needs no waiting: refreshed when the display opens and
// whenever the pointer comes into one of its windows.
class CXcbScreen
{
public:
    explicit CXcbScreen(CXcbConnection& connection) : connection_(connection) {}

    void open();    // waits for the server's version of RandR
    void refresh(); // asks anew; the answers come with CXcbConnection::pollReplies()

    PixelRect workArea(const PixelRect& around) const;

private:
    void takeMonitors(const xcb_randr_get_monitors_reply_t& reply);
    void takeWorkAreas(const xcb_get_property_reply_t& reply);

    CXcbConnection& connection_;
    bool hasMonitors_ = false;
    std::vector<PixelRect> monitors_;
    std::vector<PixelRect> workAreas_; // one a desktop, over all monitors
    std::size_t desktop_ = 0;
};

} // namespace qel::platform
