// Reading events, sharing out what they say, and the frame.
#include "CXcbSession.h"

#include "CXcbWindow.h"
#include "MonotonicClock.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace qel::platform {

namespace {

// What desktops use where nothing else is set.
constexpr xcb_timestamp_t kDoubleClickMs = 400;
constexpr int kDoubleClickPx = 5;

// An answer about the pointer that nobody fetched is out of date.
constexpr double kPointerAgeSec = 0.2;

int typeOf(const xcb_generic_event_t& event)
{
    return event.response_type & 0x7F;
}

} // namespace

CXcbSession::CXcbSession(std::string applicationName, std::function<void()> onLost)
    : applicationName_(std::move(applicationName)), onLost_(std::move(onLost)),
      connection_(std::make_shared<CXcbConnection>()), surfaces_(connection_), cursors_(*connection_),
      screen_(*connection_), keyboard_(*connection_), clipboard_(*connection_)
{}

CXcbSession::~CXcbSession()
{
    close();
}

int CXcbSession::open()
{
    if (const int error = connection_->open()) {
        return error;
    }
    const CBrokenPipeGuard guard;
    cursors_.open();
    screen_.open();
    screen_.refresh();
    clipboard_.open();
    connection_->waitReplies();
    return 0;
}

void CXcbSession::close()
{
    onLost_ = nullptr;
    heldMotion_.reset();
    cursors_.close();
    connection_->close();
}

void CXcbSession::processEvents()
{
    const auto keptAlive = shared_from_this();
    clipboard_.checkTimeout();
    readEvents();
    if (connection_->hasPending()) {
        connection_->pollReplies();
    }
    connection_->flush();
    if (connection_->get() && !isUsable()) {
        reportLoss();
    }
}

void CXcbSession::readEvents()
{
    while (connection_->get()) { // until a listener closes it
        XcbPtr<xcb_generic_event_t> event(xcb_poll_for_event(connection_->get()));
        const bool isMotion = event && typeOf(*event) == XCB_MOTION_NOTIFY;
        const bool isSameRow =
            isMotion && heldMotion_ && CXcbWindow::windowOf(*event) == CXcbWindow::windowOf(*heldMotion_);
        if (!isSameRow) {
            dispatchHeldMotion();
        }
        if (!event) {
            return;
        }
        noteTime(*event);
        // An answer that came before the event counts before it: it may be what the event goes on with.
        if (connection_->hasPending()) {
            connection_->pollReplies();
        }
        if (isMotion) {
            heldMotion_ = std::move(event);
        } else {
            dispatch(*event);
        }
    }
}

void CXcbSession::dispatchHeldMotion()
{
    if (const auto motion = std::exchange(heldMotion_, nullptr)) {
        dispatch(*motion);
    }
}

void CXcbSession::noteTime(const xcb_generic_event_t& event)
{
    const int type = typeOf(event);
    if (type >= XCB_KEY_PRESS && type <= XCB_LEAVE_NOTIFY) {
        lastEventTime_ = reinterpret_cast<const xcb_button_press_event_t&>(event).time;
    } else if (type == XCB_PROPERTY_NOTIFY) {
        lastEventTime_ = reinterpret_cast<const xcb_property_notify_event_t&>(event).time;
    }
    clipboard_.setEventTime(lastEventTime_);
}

void CXcbSession::dispatch(const xcb_generic_event_t& event)
{
    if (!connection_->get() || typeOf(event) == 0 || clipboard_.handle(event)) { // 0: an error of a request
        return;
    }
    const xcb_window_t id = CXcbWindow::windowOf(event);
    if (CXcbWindow* window = id ? find(id) : nullptr) {
        window->handle(event);
    } else if (!id || !dispatchHost(event, id)) {
        keyboard_.handle(event);
    }
}

// A window of the host: its moves are moves of ours, and its focus tells whether the user works in it.
bool CXcbSession::dispatchHost(const xcb_generic_event_t& event, xcb_window_t window)
{
    const auto host = std::ranges::find(hosts_, window, &HostWindow::id);
    if (host == hosts_.end()) {
        return false;
    }
    const int type = typeOf(event);
    if (type == XCB_CONFIGURE_NOTIFY || type == XCB_REPARENT_NOTIFY) {
        for (CXcbWindow* ours : windows_) {
            if (ours->topLevel() == window && ours->kind() == WindowKind::kChild) {
                ours->askScreenPosition();
            }
        }
    } else if (type == XCB_MAP_NOTIFY || type == XCB_UNMAP_NOTIFY) {
        forEachWindow([window, type](CXcbWindow& ours) {
            if (ours.topLevel() == window && ours.kind() == WindowKind::kChild) {
                ours.reportHostShown(type == XCB_MAP_NOTIFY);
            }
        });
    } else if (type == XCB_DESTROY_NOTIFY) {
        hosts_.erase(host);
    } else if (type == XCB_FOCUS_IN || type == XCB_FOCUS_OUT) {
        const auto& focus = reinterpret_cast<const xcb_focus_in_event_t&>(event);
        const bool isOfGrab = focus.mode == XCB_NOTIFY_MODE_GRAB || focus.mode == XCB_NOTIFY_MODE_UNGRAB;
        const bool isActive = type == XCB_FOCUS_IN || focus.detail == XCB_NOTIFY_DETAIL_INFERIOR;
        if (!isOfGrab && focus.detail < XCB_NOTIFY_DETAIL_POINTER && isActive != host->isActive) {
            host->isActive = isActive;
            forEachWindow([window, isActive](CXcbWindow& ours) {
                if (ours.topLevel() == window && ours.kind() == WindowKind::kChild) {
                    ours.reportActivation(isActive);
                }
            });
        }
    }
    return true;
}

void CXcbSession::flush()
{
    const auto keptAlive = shared_from_this();
    if (!isUsable()) {
        return;
    }
    if (!isFrameUnderWay_) {
        bool hasPresented = false;
        {
            const CBrokenPipeGuard guard;
            forEachWindow([&](CXcbWindow& window) { hasPresented = window.paint() || hasPresented; });
        }
        if (hasPresented && connection_->get()) {
            // The server answers in order, so an answer to anything says that it has read the pictures.
            isFrameUnderWay_ = true;
            connection_->whenAnswered(xcb_get_input_focus(connection_->out()),
                                      [this](const void* /*reply*/) { isFrameUnderWay_ = false; });
        }
    }
    connection_->flush();
}

void CXcbSession::forEachWindow(const std::function<void(CXcbWindow&)>& visit)
{
    const std::vector<CXcbWindow*> windows = windows_;
    for (CXcbWindow* window : windows) {
        if (std::ranges::find(windows_, window) != windows_.end()) {
            visit(*window);
        }
    }
}

void CXcbSession::reportLoss()
{
    const auto onLost = std::exchange(onLost_, nullptr);
    cursors_.close();
    connection_->close();
    forEachWindow([](CXcbWindow& window) { window.lose(); });
    if (onLost) {
        onLost();
    }
}

bool CXcbSession::queryPointer(PointerState& out)
{
    if (!isUsable()) {
        return false;
    }
    const double nowSec = monotonicSec();
    const bool isFresh = std::exchange(hasPointer_, false) && nowSec - pointerAskedSec_ < kPointerAgeSec;
    if (isFresh) {
        out = pointer_;
    }
    if (!isPointerAsked_) {
        const CBrokenPipeGuard guard;
        isPointerAsked_ = true;
        pointerAskedSec_ = nowSec;
        const auto cookie = xcb_query_pointer(connection_->out(), connection_->root());
        connection_->whenAnswered(cookie, [this](const void* answer) {
            isPointerAsked_ = false;
            if (const auto* reply = static_cast<const xcb_query_pointer_reply_t*>(answer)) {
                hasPointer_ = true;
                pointer_.screenX = reply->root_x;
                pointer_.screenY = reply->root_y;
                pointer_.isLeftDown = (reply->mask & XCB_BUTTON_MASK_1) != 0;
                pointer_.isMiddleDown = (reply->mask & XCB_BUTTON_MASK_2) != 0;
                pointer_.isRightDown = (reply->mask & XCB_BUTTON_MASK_3) != 0;
            }
        });
    }
    return isFresh;
}

bool CXcbSession::isActive() const
{
    return std::ranges::any_of(hosts_, &HostWindow::isActive) ||
           std::ranges::any_of(windows_, [](const CXcbWindow* window) { return window->hasFocus(); });
}

void CXcbSession::add(CXcbWindow& window)
{
    windows_.push_back(&window);
}

void CXcbSession::remove(CXcbWindow& window)
{
    std::erase(windows_, &window);
}

void CXcbSession::moveToTop(CXcbWindow& window)
{
    std::erase(windows_, &window);
    windows_.push_back(&window);
}

CXcbWindow* CXcbSession::find(xcb_window_t id) const
{
    const auto at = std::ranges::find(windows_, id, &CXcbWindow::id);
    return id && at != windows_.end() ? *at : nullptr;
}

// Lists lie over dialogs, and both over what lies in the host.
CXcbWindow* CXcbSession::windowAt(int screenX, int screenY) const
{
    for (const WindowKind kind : {WindowKind::kPopup, WindowKind::kDialog, WindowKind::kChild}) {
        for (auto at = windows_.rbegin(); at != windows_.rend(); ++at) {
            if ((*at)->kind() == kind && (*at)->isShown() &&
                (*at)->screenPlace().contains(screenX, screenY)) {
                return *at;
            }
        }
    }
    return nullptr;
}

void CXcbSession::watchHost(xcb_window_t topLevel)
{
    if (!topLevel || std::ranges::find(hosts_, topLevel, &HostWindow::id) != hosts_.end()) {
        return;
    }
    // Open, it has what the user does; later events correct it.
    hosts_.push_back({topLevel, true});
    constexpr std::uint32_t kEventMask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(connection_->out(), topLevel, XCB_CW_EVENT_MASK, &kEventMask);
}

bool CXcbSession::isDoubleClick(const xcb_button_press_event_t& press)
{
    const bool isSecond = lastClick_.window == press.event && lastClick_.button == press.detail &&
                          press.time - lastClick_.time <= kDoubleClickMs &&
                          std::abs(press.root_x - lastClick_.x) <= kDoubleClickPx &&
                          std::abs(press.root_y - lastClick_.y) <= kDoubleClickPx;
    lastClick_ =
        isSecond ? Click{} : Click{press.event, press.detail, press.time, press.root_x, press.root_y};
    return isSecond;
}

} // namespace qel::platform
