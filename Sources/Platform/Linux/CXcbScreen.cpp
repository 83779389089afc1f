// Answers about monitors and desktops.
#include "CXcbScreen.h"

#include <algorithm>
#include <cstdint>

namespace qel::platform {

namespace {

constexpr std::uint32_t kMaxCardinals = 4 * 64; // desktops beyond that are nobody's

const std::uint32_t* cardinals(const xcb_get_property_reply_t& reply, std::size_t& outCount)
{
    const bool isUsable = reply.type == XCB_ATOM_CARDINAL && reply.format == 32;
    outCount = isUsable ? static_cast<std::size_t>(xcb_get_property_value_length(&reply)) / 4 : 0;
    return static_cast<const std::uint32_t*>(xcb_get_property_value(&reply));
}

long long area(const PixelRect& rect)
{
    return static_cast<long long>(rect.width) * rect.height;
}

} // namespace

void CXcbScreen::open()
{
    if (!hasXcbRandr()) {
        return;
    }
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection_.get(), xcb_randr_id);
    if (!extension || !extension->present) {
        return;
    }
    const auto cookie = xcb_randr_query_version(connection_.out(), 1, 5);
    const auto version = connection_.wait<xcb_randr_query_version_reply_t>(cookie);
    hasMonitors_ = version && (version->major_version > 1 || version->minor_version >= 5);
}

void CXcbScreen::refresh()
{
    const auto property = [this](xcb_atom_t name) {
        return xcb_get_property(connection_.out(), 0, connection_.root(), name, XCB_ATOM_CARDINAL, 0,
                                kMaxCardinals);
    };
    connection_.whenAnswered(property(connection_.atoms().netCurrentDesktop), [this](const void* reply) {
        std::size_t count = 0;
        const auto* values =
            reply ? cardinals(*static_cast<const xcb_get_property_reply_t*>(reply), count) : nullptr;
        desktop_ = count ? *values : 0;
    });
    connection_.whenAnswered(property(connection_.atoms().netWorkarea), [this](const void* reply) {
        if (reply) {
            takeWorkAreas(*static_cast<const xcb_get_property_reply_t*>(reply));
        }
    });
    if (hasMonitors_) {
        constexpr std::uint8_t kActiveOnly = 1;
        const auto cookie = xcb_randr_get_monitors(connection_.out(), connection_.root(), kActiveOnly);
        connection_.whenAnswered(cookie, [this](const void* reply) {
            if (reply) {
                takeMonitors(*static_cast<const xcb_randr_get_monitors_reply_t*>(reply));
            }
        });
    }
}

void CXcbScreen::takeMonitors(const xcb_randr_get_monitors_reply_t& reply)
{
    monitors_.clear();
    auto monitors = xcb_randr_get_monitors_monitors_iterator(&reply);
    for (; monitors.rem; xcb_randr_monitor_info_next(&monitors)) {
        const xcb_randr_monitor_info_t& monitor = *monitors.data;
        monitors_.push_back({monitor.x, monitor.y, monitor.width, monitor.height});
    }
}

void CXcbScreen::takeWorkAreas(const xcb_get_property_reply_t& reply)
{
    workAreas_.clear();
    std::size_t count = 0;
    const std::uint32_t* values = cardinals(reply, count);
    for (std::size_t i = 0; i + 4 <= count; i += 4) {
        workAreas_.push_back({static_cast<int>(values[i]), static_cast<int>(values[i + 1]),
                              static_cast<int>(values[i + 2]), static_cast<int>(values[i + 3])});
    }
}

PixelRect CXcbScreen::workArea(const PixelRect& around) const
{
    const xcb_screen_t& screen = connection_.screen();
    PixelRect monitor = monitors_.empty() ? PixelRect{0, 0, screen.width_in_pixels, screen.height_in_pixels}
                                          : monitors_.front();
    for (const PixelRect& other : monitors_) {
        if (area(intersect(other, around)) > area(intersect(monitor, around))) {
            monitor = other;
        }
    }
    if (workAreas_.empty()) {
        return monitor;
    }
    // Window managers tell one rectangle for all monitors; one that misses this monitor says nothing about
    // it.
    const PixelRect free = intersect(monitor, workAreas_[std::min(desktop_, workAreas_.size() - 1)]);
    return free.isEmpty() ? monitor : free;
}

} // namespace qel::platform
