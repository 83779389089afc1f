// One X11 window of ours.
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

template <typename Event>
const Event& as(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const Event&>(event);
}

} // namespace

CXcbWindow::CXcbWindow(std::shared_ptr<CXcbSession> session, CSystemWindowListener& listener)
    : session_(std::move(session)), listener_(listener),
      hints_(session_->connection(), session_->applicationName()), focus_(session_->connection()),
      pointer_(*session_, listener)
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
    WindowDescription placed = description;
    placed.place = {description.place.x, description.place.y, width_, height_};
    hints_.set(id_, placed, topLevel_);
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
        pointer_.leaveSilently();
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
        hints_.setTitle(title);
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
        hints_.setSize(width_, height_);
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

// --- events

xcb_window_t CXcbWindow::windowOf(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_EXPOSE:
        return as<xcb_expose_event_t>(event).window;
    case XCB_CONFIGURE_NOTIFY:
        return as<xcb_configure_notify_event_t>(event).event;
    case XCB_DESTROY_NOTIFY:
        return as<xcb_destroy_notify_event_t>(event).event;
    case XCB_REPARENT_NOTIFY:
        return as<xcb_reparent_notify_event_t>(event).event;
    case XCB_UNMAP_NOTIFY:
    case XCB_MAP_NOTIFY:
        return as<xcb_unmap_notify_event_t>(event).event;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
    case XCB_MOTION_NOTIFY:
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        return as<xcb_button_press_event_t>(event).event;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        return as<xcb_focus_in_event_t>(event).event;
    case XCB_CLIENT_MESSAGE:
        return as<xcb_client_message_event_t>(event).window;
    default:
        return 0;
    }
}

void CXcbWindow::handle(const xcb_generic_event_t& event)
{
    const int type = event.response_type & 0x7F;
    switch (type) {
    case XCB_EXPOSE: {
        const auto& expose = as<xcb_expose_event_t>(event);
        invalidate({expose.x, expose.y, expose.width, expose.height});
        break;
    }
    case XCB_CONFIGURE_NOTIFY:
        handleConfigure(as<xcb_configure_notify_event_t>(event), event.full_sequence);
        break;
    case XCB_DESTROY_NOTIFY:
        lose();
        break;
    case XCB_REPARENT_NOTIFY:
        askScreenPosition();
        break;
    case XCB_UNMAP_NOTIFY:
        pointer_.cancel();
        break;
    case XCB_MAP_NOTIFY: // a dialog can have the focus only from now on
        focus_.accept(session_->lastEventTime());
        break;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        noteOrigin(as<xcb_motion_notify_event_t>(event));
        pointer_.handleButton(as<xcb_button_press_event_t>(event), type == XCB_BUTTON_PRESS);
        break;
    case XCB_MOTION_NOTIFY:
        noteOrigin(as<xcb_motion_notify_event_t>(event));
        pointer_.handleMotion(as<xcb_motion_notify_event_t>(event));
        break;
    case XCB_ENTER_NOTIFY:
        pointer_.handleEnter(as<xcb_enter_notify_event_t>(event));
        break;
    case XCB_LEAVE_NOTIFY:
        pointer_.handleLeave();
        break;
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        handleKey(as<xcb_key_press_event_t>(event), type == XCB_KEY_PRESS);
        break;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        if (focus_.handle(as<xcb_focus_in_event_t>(event), type == XCB_FOCUS_IN, event.full_sequence)) {
            listener_.onFocus(focus_.isFocused());
        }
        break;
    case XCB_CLIENT_MESSAGE:
        handleMessage(as<xcb_client_message_event_t>(event));
        break;
    default:
        break;
    }
}

// The server tells a place in the parent, which for a window with a frame is not the screen; window managers
// tell the place on the screen. Sizes from before our last request are out of date.
void CXcbWindow::handleConfigure(const xcb_configure_notify_event_t& event, std::uint32_t sequence)
{
    const bool isOutdated = static_cast<std::int32_t>(sequence - placeSequence_) < 0;
    if (isOutdated) {
        return;
    }
    const std::weak_ptr<bool> life = life_;
    if (event.width != width_ || event.height != height_) {
        width_ = event.width;
        height_ = event.height;
        listener_.onResize(width_, height_);
        if (isGone(life) || !isUsable()) {
            return;
        }
    }
    const bool isByManager = (event.response_type & 0x80) != 0;
    if (isTopLevel() && (isByManager || kind_ == WindowKind::kPopup)) {
        noteScreenPosition(event.x, event.y);
    } else {
        askScreenPosition();
    }
}

void CXcbWindow::askScreenPosition()
{
    if (!isUsable()) {
        return;
    }
    CXcbConnection& connection = session_->connection();
    const auto cookie = xcb_translate_coordinates(connection.out(), id_, connection.root(), 0, 0);
    connection.whenAnswered(cookie, [this, life = std::weak_ptr(life_)](const void* reply) {
        if (reply && !isGone(life)) {
            const auto& place = *static_cast<const xcb_translate_coordinates_reply_t*>(reply);
            noteScreenPosition(place.dst_x, place.dst_y);
        }
    });
}

// Events of the pointer, which all begin alike, tell by the way where the window lies.
void CXcbWindow::noteOrigin(const xcb_motion_notify_event_t& event)
{
    screenX_ = event.root_x - event.event_x;
    screenY_ = event.root_y - event.event_y;
}

void CXcbWindow::noteScreenPosition(int screenX, int screenY)
{
    if (screenX != screenX_ || screenY != screenY_) {
        screenX_ = screenX;
        screenY_ = screenY;
        listener_.onMove(screenX, screenY);
    }
}

void CXcbWindow::handleKey(const xcb_key_press_event_t& event, bool isPress)
{
    if (!focus_.isTaken()) { // sent before the server learnt that we want no more
        return;
    }
    if (!isPress) {
        listener_.onKeyRelease(session_->keyboard().release(event));
        return;
    }
    const std::weak_ptr<bool> life = life_;
    for (const KeyEvent& key : session_->keyboard().press(event)) {
        listener_.onKeyPress(key);
        if (isGone(life)) {
            return;
        }
    }
}

void CXcbWindow::handleMessage(const xcb_client_message_event_t& event)
{
    const XcbAtoms& atoms = session_->connection().atoms();
    if (event.type != atoms.wmProtocols || event.format != 32) {
        return;
    }
    if (event.data.data32[0] == atoms.wmTakeFocus) {
        focus_.accept(event.data.data32[1]);
    } else if (event.data.data32[0] == atoms.wmDeleteWindow) {
        listener_.onCloseRequest();
    }
}

void CXcbWindow::reportActivation(bool isActive)
{
    listener_.onActivation(isActive);
}

void CXcbWindow::reportHostShown(bool isShown)
{
    listener_.onHostShown(isShown);
}

void CXcbWindow::lose()
{
    if (!id_) {
        return;
    }
    if (session_->isUsable()) {
        xcb_free_gc(out(), gc_);
    }
    id_ = 0;
    isShown_ = false;
    pointer_.end();
    damage_.clear();
    focus_.detach();
    listener_.onDestroyed();
}

} // namespace qel::platform
