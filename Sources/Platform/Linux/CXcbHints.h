// What a window tells window managers and hosts.
#pragma once

#include "CSystemWindow.h"
#include "CXcbConnection.h"

#include <string>
#include <vector>

namespace qel::platform {

// The properties of one window. Part of a CXcbWindow, which sees to it that there is one.
class CXcbHints
{
public:
    CXcbHints(CXcbConnection& connection, const std::string& applicationName)
        : connection_(connection), applicationName_(applicationName)
    {}

    // Of the new window. `topLevel`: the host's window that it belongs to, or 0.
    void set(xcb_window_t window, const WindowDescription& description, xcb_window_t topLevel);
    void setTitle(const std::string& title);
    // Of a dialog: our place is meant, and the user cannot change the size.
    void setSize(int width, int height);

private:
    void setForDialog(const WindowDescription& description, bool hasTopLevel);
    void setText(xcb_atom_t property, xcb_atom_t type, const std::string& text);
    void setWords(xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& values);

    CXcbConnection& connection_;
    const std::string& applicationName_;
    xcb_window_t window_ = 0;
};

} // namespace qel::platform
