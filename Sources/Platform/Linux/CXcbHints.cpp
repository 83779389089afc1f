// What a window tells window managers and hosts.
#include "CXcbHints.h"

namespace qel::platform {

void CXcbHints::set(xcb_window_t window, const WindowDescription& description, xcb_window_t topLevel)
{
    window_ = window;
    const XcbAtoms& atoms = connection_.atoms();
    if (description.kind != WindowKind::kPopup && description.kind != WindowKind::kDialog) {
        constexpr std::uint32_t kVersion = 0;
        constexpr std::uint32_t kMapped = 1;
        setWords(atoms.xembedInfo, atoms.xembedInfo, {kVersion, kMapped});
        return;
    }
    setTitle(description.title);
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, applicationName_ + '\0' + applicationName_ + '\0');
    if (topLevel) {
        setWords(XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, {topLevel});
    }
    if (description.kind == WindowKind::kDialog) {
        setForDialog(description, topLevel != 0);
    } else if (description.isHelper) {
        setWords(atoms.netWmWindowType, XCB_ATOM_ATOM, {atoms.netWmWindowTypeTooltip});
    } else {
        setWords(atoms.netWmWindowType, XCB_ATOM_ATOM,
                 {atoms.netWmWindowTypeDropdownMenu, atoms.netWmWindowTypePopupMenu});
    }
}

void CXcbHints::setForDialog(const WindowDescription& description, bool hasTopLevel)
{
    const XcbAtoms& atoms = connection_.atoms();
    setWords(atoms.netWmWindowType, XCB_ATOM_ATOM, {atoms.netWmWindowTypeDialog});
    setWords(atoms.wmProtocols, XCB_ATOM_ATOM, {atoms.wmDeleteWindow, atoms.wmTakeFocus});
    std::vector<std::uint32_t> states;
    if (!hasTopLevel) {
        states.push_back(atoms.netWmStateAbove);
    }
    if (!description.isOnTaskbar) {
        states.insert(states.end(), {atoms.netWmStateSkipTaskbar, atoms.netWmStateSkipPager});
    }
    setWords(atoms.netWmState, XCB_ATOM_ATOM, states);
    constexpr std::uint32_t kHasDecorations = 2;
    setWords(atoms.motifWmHints, atoms.motifWmHints, {kHasDecorations, 0, 0, 0, 0});
    // The window asks for the focus itself, while a text is edited; until then the host keeps the keyboard.
    constexpr std::uint32_t kHasInput = 1;
    setWords(XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, {kHasInput, 0, 0, 0, 0, 0, 0, 0, 0});
    setSize(description.place.width, description.place.height);
}

void CXcbHints::setTitle(const std::string& title)
{
    const XcbAtoms& atoms = connection_.atoms();
    setText(atoms.netWmName, atoms.utf8String, title);
    setText(XCB_ATOM_WM_NAME, atoms.utf8String, title);
}

void CXcbHints::setSize(int width, int height)
{
    constexpr std::uint32_t kUserPosition = 1;
    constexpr std::uint32_t kProgramPosition = 4;
    constexpr std::uint32_t kProgramSize = 8;
    constexpr std::uint32_t kLeastSize = 16;
    constexpr std::uint32_t kGreatestSize = 32;
    std::vector<std::uint32_t> hints(18, 0);
    hints[0] = kUserPosition | kProgramPosition | kProgramSize | kLeastSize | kGreatestSize;
    hints[5] = hints[7] = static_cast<std::uint32_t>(width);
    hints[6] = hints[8] = static_cast<std::uint32_t>(height);
    setWords(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
}

void CXcbHints::setText(xcb_atom_t property, xcb_atom_t type, const std::string& text)
{
    xcb_change_property(connection_.out(), XCB_PROP_MODE_REPLACE, window_, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

void CXcbHints::setWords(xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& values)
{
    xcb_change_property(connection_.out(), XCB_PROP_MODE_REPLACE, window_, property, type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
}

} // namespace qel::platform
