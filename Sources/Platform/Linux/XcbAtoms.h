// The names this layer shares with window managers and other clients.
#pragma once

#include "XcbLibrary.h"

#include <array>

namespace qel::platform {

struct XcbAtoms
{
    xcb_atom_t clipboard = 0;
    xcb_atom_t clipboardData = 0; // the property of ours that others write their text to
    xcb_atom_t incr = 0;
    xcb_atom_t targets = 0;
    xcb_atom_t text = 0;
    xcb_atom_t textPlainUtf8 = 0;
    xcb_atom_t timestamp = 0;
    xcb_atom_t utf8String = 0;
    xcb_atom_t motifWmHints = 0;
    xcb_atom_t netCurrentDesktop = 0;
    xcb_atom_t netWmName = 0;
    xcb_atom_t netWmState = 0;
    xcb_atom_t netWmStateAbove = 0;
    xcb_atom_t netWmStateSkipPager = 0;
    xcb_atom_t netWmStateSkipTaskbar = 0;
    xcb_atom_t netWmWindowType = 0;
    xcb_atom_t netWmWindowTypeDialog = 0;
    xcb_atom_t netWmWindowTypeDropdownMenu = 0;
    xcb_atom_t netWmWindowTypePopupMenu = 0;
    xcb_atom_t netWmWindowTypeTooltip = 0;
    xcb_atom_t netWorkarea = 0;
    xcb_atom_t wmDeleteWindow = 0;
    xcb_atom_t wmProtocols = 0;
    xcb_atom_t wmState = 0;
    xcb_atom_t wmTakeFocus = 0;
    xcb_atom_t xembedInfo = 0;
};

struct XcbAtomName
{
    const char* name;
    xcb_atom_t XcbAtoms::*member;
};

inline constexpr std::array kXcbAtomNames = {
    XcbAtomName{"CLIPBOARD", &XcbAtoms::clipboard},
    XcbAtomName{"QEL_CLIPBOARD", &XcbAtoms::clipboardData},
    XcbAtomName{"INCR", &XcbAtoms::incr},
    XcbAtomName{"TARGETS", &XcbAtoms::targets},
    XcbAtomName{"TEXT", &XcbAtoms::text},
    XcbAtomName{"text/plain;charset=utf-8", &XcbAtoms::textPlainUtf8},
    XcbAtomName{"TIMESTAMP", &XcbAtoms::timestamp},
    XcbAtomName{"UTF8_STRING", &XcbAtoms::utf8String},
    XcbAtomName{"_MOTIF_WM_HINTS", &XcbAtoms::motifWmHints},
    XcbAtomName{"_NET_CURRENT_DESKTOP", &XcbAtoms::netCurrentDesktop},
    XcbAtomName{"_NET_WM_NAME", &XcbAtoms::netWmName},
    XcbAtomName{"_NET_WM_STATE", &XcbAtoms::netWmState},
    XcbAtomName{"_NET_WM_STATE_ABOVE", &XcbAtoms::netWmStateAbove},
    XcbAtomName{"_NET_WM_STATE_SKIP_PAGER", &XcbAtoms::netWmStateSkipPager},
    XcbAtomName{"_NET_WM_STATE_SKIP_TASKBAR", &XcbAtoms::netWmStateSkipTaskbar},
    XcbAtomName{"_NET_WM_WINDOW_TYPE", &XcbAtoms::netWmWindowType},
    XcbAtomName{"_NET_WM_WINDOW_TYPE_DIALOG", &XcbAtoms::netWmWindowTypeDialog},
    XcbAtomName{"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", &XcbAtoms::netWmWindowTypeDropdownMenu},
    XcbAtomName{"_NET_WM_WINDOW_TYPE_POPUP_MENU", &XcbAtoms::netWmWindowTypePopupMenu},
    XcbAtomName{"_NET_WM_WINDOW_TYPE_TOOLTIP", &XcbAtoms::netWmWindowTypeTooltip},
    XcbAtomName{"_NET_WORKAREA", &XcbAtoms::netWorkarea},
    XcbAtomName{"WM_DELETE_WINDOW", &XcbAtoms::wmDeleteWindow},
    XcbAtomName{"WM_PROTOCOLS", &XcbAtoms::wmProtocols},
    XcbAtomName{"WM_STATE", &XcbAtoms::wmState},
    XcbAtomName{"WM_TAKE_FOCUS", &XcbAtoms::wmTakeFocus},
    XcbAtomName{"_XEMBED_INFO", &XcbAtoms::xembedInfo},
};

} // namespace qel::platform
