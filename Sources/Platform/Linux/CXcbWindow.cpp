// Making a window, and what it is told to do.
#include "CXcbWindow.h"

#include "XcbHost.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace qel::platform {

namespace {

constexpr std::uint32_t kEventMask = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                     XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                     XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_ENTER_WINDOW |
                                     XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_FOCUS_CHANGE;

// Of rectangles to paint; with more of them one that holds all is cheaper.
constexpr std::size_t kMaxDamage = 64;

constexpr int kMaxSide = 0x7FFF; // of anything in X

std::uint32_t toWord(int value)
{
    return static_cast<std::uint32_t>(value);
}

} // namespace

CXcbWindow::CXcbWindow(std::shared_ptr<CXcbSession> session, CSystemWindowListener& listener)
    : session_(std::move(session)), listener_(listener), focus_(session_->connection())
{}

CXcbWindow::~CXcbWindow()
{
    session_->remove(*this);
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        focus_.giveBack(session_->lastEventTime());
        xcb_free_gc(out(), gc_);
        xcb_destroy_window(out(), id_);
        session_->connection().flush(); // the editor may be closed without another flush
    }
}

int CXcbWindow::create(const WindowDescription& description)
{
    if (!session_->isUsable()) {
        return ENOTCONN;
    }
    const CBrokenPipeGuard guard;
    CXcbConnection& connection = session_->connection();
    kind_ = description.kind;
    const auto given = static_cast<xcb_window_t>(description.parent);
    CXcbWindow* const ours = session_->find(given);
    if ((description.parent || !isTopLevel()) && !ours && !isXcbWindow(connection, description.parent)) {
        return EINVAL;
    }
    topLevel_ = ours ? ours->topLevel() : description.parent ? findXcbTopLevel(connection, given) : 0;
    if (const int error = createNative(description, isTopLevel() ? connection.root() : given)) {
        return error;
    }
    session_->add(*this);
    focus_.attach(id_, kEventMask);
    setHints(description);
    if (topLevel_ && !session_->find(topLevel_)) {
        session_->watchHost(topLevel_);
    }
    if (kind_ == WindowKind::kDialog) {
        topLevel_ = id_;
    }
    if (isTopLevel()) {
        screenX_ = description.place.x;
        screenY_ = description.place.y;
    } else {
        show();
        const auto place = connection.wait<xcb_translate_coordinates_reply_t>(
            xcb_translate_coordinates(connection.out(), id_, connection.root(), 0, 0));
        screenX_ = place ? place->dst_x : 0;
        screenY_ = place ? place->dst_y : 0;
    }
    return 0;
}

int CXcbWindow::createNative(const WindowDescription& description, xcb_window_t parent)
{
    CXcbConnection& connection = session_->connection();
    const XcbPixelFormat& format = connection.format();
    width_ = std::clamp(description.place.width, 1, kMaxSide);
    height_ = std::clamp(description.place.height, 1, kMaxSide);
    id_ = xcb_generate_id(connection.get());
    const auto eventMask =
        kind_ == WindowKind::kBridge ? std::uint32_t{XCB_EVENT_MASK_STRUCTURE_NOTIFY} : kEventMask;
    // The arrow is set too: a list, whose parent is the root, would inherit that one's.
    // A parent of another depth would pass on a border that does not fit, and a background would flicker.
    const std::uint32_t values[] = {
        XCB_BACK_PIXMAP_NONE,
        0,
        XCB_GRAVITY_NORTH_WEST,
        kind_ == WindowKind::kPopup ? 1u : 0u,
        eventMask,
        format.colormap,
        session_->cursors().get(CursorShape::kArrow),
    };
    constexpr std::uint32_t kValues = XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP |
                                      XCB_CW_CURSOR;
    const auto cookie = xcb_create_window_checked(
        connection.out(), format.depth, id_, parent, static_cast<std::int16_t>(description.place.x),
        static_cast<std::int16_t>(description.place.y), static_cast<std::uint16_t>(width_),
        static_cast<std::uint16_t>(height_), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, format.visual, kValues,
        values);
    if (!connection.check(cookie)) { // the parent may have gone since we asked
        id_ = 0;
        return EINVAL;
    }
    gc_ = xcb_generate_id(connection.get());
    constexpr std::uint32_t kNoExposures = 0;
    xcb_create_gc(connection.out(), gc_, id_, XCB_GC_GRAPHICS_EXPOSURES, &kNoExposures);
    return 0;
}

void CXcbWindow::setHints(const WindowDescription& description)
{
    const XcbAtoms& atoms = session_->connection().atoms();
    if (!isTopLevel()) {
        constexpr std::uint32_t kVersion = 0;
        constexpr std::uint32_t kMapped = 1;
        setWords(atoms.xembedInfo, atoms.xembedInfo, {kVersion, kMapped});
        return;
    }
    setTitle(description.title);
    const std::string& name = session_->applicationName();
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, name + '\0' + name + '\0');
    if (topLevel_) {
        setWords(XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, {topLevel_});
    }
    if (kind_ == WindowKind::kDialog) {
        setWindowManagerHints(description);
    } else if (description.isHelper) {
        setWords(atoms.netWmWindowType, XCB_ATOM_ATOM, {atoms.netWmWindowTypeTooltip});
    } else {
        setWords(atoms.netWmWindowType, XCB_ATOM_ATOM,
                 {atoms.netWmWindowTypeDropdownMenu, atoms.netWmWindowTypePopupMenu});
    }
}

void CXcbWindow::setWindowManagerHints(const WindowDescription& description)
{
    const XcbAtoms& atoms = session_->connection().atoms();
    setWords(atoms.netWmWindowType, XCB_ATOM_ATOM, {atoms.netWmWindowTypeDialog});
    setWords(atoms.wmProtocols, XCB_ATOM_ATOM, {atoms.wmDeleteWindow, atoms.wmTakeFocus});
    std::vector<std::uint32_t> states;
    if (topLevel_ == 0) {
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
    setSizeHints();
}

// Our place is meant, and the user cannot change the size.
void CXcbWindow::setSizeHints()
{
    constexpr std::uint32_t kUserPosition = 1;
    constexpr std::uint32_t kProgramPosition = 4;
    constexpr std::uint32_t kProgramSize = 8;
    constexpr std::uint32_t kLeastSize = 16;
    constexpr std::uint32_t kGreatestSize = 32;
    std::vector<std::uint32_t> hints(18, 0);
    hints[0] = kUserPosition | kProgramPosition | kProgramSize | kLeastSize | kGreatestSize;
    hints[5] = hints[7] = toWord(width_);
    hints[6] = hints[8] = toWord(height_);
    setWords(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
}

void CXcbWindow::setText(xcb_atom_t property, xcb_atom_t type, const std::string& text)
{
    xcb_change_property(out(), XCB_PROP_MODE_REPLACE, id_, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

void CXcbWindow::setWords(xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& values)
{
    xcb_change_property(out(), XCB_PROP_MODE_REPLACE, id_, property, type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
}

void CXcbWindow::show()
{
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        xcb_map_window(out(), id_);
        isShown_ = true;
    }
}

void CXcbWindow::hide()
{
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        focus_.giveBack(session_->lastEventTime());
        xcb_unmap_window(out(), id_);
        isShown_ = false;
        isPointerInside_ = false;
    }
}

void CXcbWindow::raise()
{
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        constexpr std::uint32_t kAbove = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(out(), id_, XCB_CONFIG_WINDOW_STACK_MODE, &kAbove);
        session_->moveToTop(*this);
    }
}

void CXcbWindow::setTitle(const std::string& title)
{
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        const XcbAtoms& atoms = session_->connection().atoms();
        setText(atoms.netWmName, atoms.utf8String, title);
        setText(XCB_ATOM_WM_NAME, atoms.utf8String, title);
    }
}

void CXcbWindow::setCursor(CursorShape shape)
{
    if (isUsable() && shape != cursor_) {
        const CBrokenPipeGuard guard;
        cursor_ = shape;
        const std::uint32_t cursor = session_->cursors().get(shape);
        xcb_change_window_attributes(out(), id_, XCB_CW_CURSOR, &cursor);
    }
}

void CXcbWindow::setPlace(const PixelRect& place)
{
    if (!isUsable()) {
        return;
    }
    const CBrokenPipeGuard guard;
    const bool isResized = place.width != width_ || place.height != height_;
    width_ = std::clamp(place.width, 1, kMaxSide);
    height_ = std::clamp(place.height, 1, kMaxSide);
    if (isResized && kind_ == WindowKind::kDialog) {
        setSizeHints();
    }
    const std::uint32_t values[] = {toWord(place.x), toWord(place.y), toWord(width_), toWord(height_)};
    constexpr std::uint16_t kValues =
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
    placeSequence_ = xcb_configure_window(out(), id_, kValues, values).sequence;
    if (isTopLevel()) {
        screenX_ = place.x;
        screenY_ = place.y;
    } else {
        askScreenPosition();
    }
}

bool CXcbWindow::setParent(NativeWindow parent)
{
    if (!isUsable() || isTopLevel()) {
        return false;
    }
    const CBrokenPipeGuard guard;
    CXcbConnection& connection = session_->connection();
    const auto id = static_cast<xcb_window_t>(parent);
    if (!isXcbWindow(connection, parent) ||
        !connection.check(xcb_reparent_window_checked(connection.out(), id_, id, 0, 0))) {
        return false;
    }
    CXcbWindow* const ours = session_->find(id);
    topLevel_ = ours ? ours->topLevel() : findXcbTopLevel(connection, id);
    session_->watchHost(topLevel_);
    return true;
}

void CXcbWindow::invalidate(const PixelRect& area)
{
    const PixelRect inside = intersect(area, {0, 0, width_, height_});
    if (id_ == 0 || inside.isEmpty()) {
        return;
    }
    const auto isWithin = [](const PixelRect& inner, const PixelRect& outer) {
        return unite(inner, outer) == outer;
    };
    for (const PixelRect& rect : damage_) {
        if (isWithin(inside, rect)) {
            return;
        }
    }
    std::erase_if(damage_, [&](const PixelRect& rect) { return isWithin(rect, inside); });
    damage_.push_back(inside);
    if (damage_.size() > kMaxDamage) {
        PixelRect all;
        for (const PixelRect& rect : damage_) {
            all = unite(all, rect);
        }
        damage_.assign(1, all);
    }
}

bool CXcbWindow::paint()
{
    if (!isUsable() || !isShown_ || damage_.empty()) {
        return false;
    }
    const std::weak_ptr<bool> life = life_;
    const auto session = session_;
    hasPresented_ = false;
    isPresenting_ = true;
    for (const PixelRect& rect : std::exchange(damage_, {})) {
        listener_.onPaint(rect);
        if (isGone(life)) {
            return session->isUsable();
        }
    }
    isPresenting_ = false;
    return hasPresented_;
}

void CXcbWindow::present(const CSystemSurface& surface, const PixelRect& source, int x, int y)
{
    if (!isPresenting_ || !isUsable()) {
        return;
    }
    PixelRect part = intersect(source, {0, 0, surface.width(), surface.height()});
    const PixelRect target = intersect(
        {x + part.x - source.x, y + part.y - source.y, part.width, part.height}, {0, 0, width_, height_});
    if (part.isEmpty() || target.isEmpty()) {
        return;
    }
    part = {source.x + target.x - x, source.y + target.y - y, target.width, target.height};
    session_->surfaces().put(static_cast<const CXcbSurface&>(surface), part, id_, gc_, target.x, target.y);
    hasPresented_ = true;
}

void CXcbWindow::takeFocus()
{
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        session_->keyboard().open();
        session_->keyboard().resetCompose();
        focus_.take(session_->lastEventTime());
    }
}

void CXcbWindow::giveFocusBack()
{
    if (isUsable()) {
        const CBrokenPipeGuard guard;
        focus_.giveBack(session_->lastEventTime());
    }
}

} // namespace qel::platform
