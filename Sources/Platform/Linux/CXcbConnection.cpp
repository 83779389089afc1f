// Connecting, and the bookkeeping of answers.
#include "CXcbConnection.h"

#include <signal.h>

#include <bit>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>

namespace qel::platform {

namespace {

constexpr std::uint32_t kRedMask = 0xFF0000;
constexpr std::uint32_t kGreenMask = 0x00FF00;
constexpr std::uint32_t kBlueMask = 0x0000FF;

xcb_screen_t* screenAt(const xcb_setup_t* setup, int number)
{
    auto screens = xcb_setup_roots_iterator(setup);
    for (; screens.rem > 1 && number > 0; --number) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data : nullptr;
}

// Connecting reads the file of authorities into memory that all of the process shares, and editors may open
// on several threads.
xcb_connection_t* connectInTurn(int& screenNumber)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return xcb_connect(nullptr, &screenNumber);
}

} // namespace

bool XcbPixelFormat::isNative() const
{
    return bitsPerPixel == 32 && depth == 24 && redMask == kRedMask && greenMask == kGreenMask &&
           blueMask == kBlueMask && isMostSignificantFirst == (std::endian::native == std::endian::big);
}

CXcbConnection::~CXcbConnection()
{
    close();
}

int CXcbConnection::open()
{
    if (!loadXcb()) {
        return ELIBACC;
    }
    const CBrokenPipeGuard guard;
    int screenNumber = 0;
    connection_ = connectInTurn(screenNumber);
    screen_ = isAlive() ? screenAt(xcb_get_setup(connection_), screenNumber) : nullptr;
    if (!screen_) {
        close();
        return ECONNREFUSED;
    }
    internAtoms();
    if (!chooseFormat()) {
        close();
        return ENODEV;
    }
    return isAlive() ? 0 : ECONNREFUSED;
}

void CXcbConnection::close()
{
    pending_.clear();
    screen_ = nullptr;
    if (connection_) {
        const CBrokenPipeGuard guard;
        xcb_disconnect(std::exchange(connection_, nullptr));
    }
}

bool CXcbConnection::isAlive() const
{
    return connection_ && !xcb_connection_has_error(connection_);
}

void CXcbConnection::flush()
{
    if (isDirty_ && connection_) {
        const CBrokenPipeGuard guard;
        xcb_flush(connection_);
        isDirty_ = false;
    }
}

void CXcbConnection::internAtoms()
{
    std::array<xcb_intern_atom_cookie_t, kXcbAtomNames.size()> cookies{};
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const char* name = kXcbAtomNames[i].name;
        cookies[i] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    }
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const auto reply = wait<xcb_intern_atom_reply_t>(cookies[i]);
        atoms_.*kXcbAtomNames[i].member = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
}

// The first visual that takes our pixels as they are, beginning with the screen's own; else the screen's own,
// for which pixels are converted.
bool CXcbConnection::chooseFormat()
{
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    XcbPixelFormat own;
    XcbPixelFormat native;
    for (auto depths = xcb_screen_allowed_depths_iterator(screen_); depths.rem; xcb_depth_next(&depths)) {
        XcbPixelFormat format;
        format.depth = depths.data->depth;
        format.isMostSignificantFirst = setup->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
        for (int i = 0; i < xcb_setup_pixmap_formats_length(setup); ++i) {
            const xcb_format_t& image = xcb_setup_pixmap_formats(setup)[i];
            if (image.depth == format.depth) {
                format.bitsPerPixel = image.bits_per_pixel;
                format.rowAlignmentBits = image.scanline_pad;
            }
        }
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem;
             xcb_visualtype_next(&visuals)) {
            const xcb_visualtype_t& visual = *visuals.data;
            if (visual._class != XCB_VISUAL_CLASS_TRUE_COLOR) {
                continue;
            }
            format.visual = visual.visual_id;
            format.redMask = visual.red_mask;
            format.greenMask = visual.green_mask;
            format.blueMask = visual.blue_mask;
            const bool isOwn = visual.visual_id == screen_->root_visual;
            own = isOwn ? format : own;
            native = format.isNative() && (isOwn || !native.visual) ? format : native;
        }
    }
    format_ = native.visual ? native : own;
    format_.colormap = screen_->default_colormap;
    if (format_.visual != screen_->root_visual) {
        format_.colormap = xcb_generate_id(connection_);
        xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, format_.colormap, root(), format_.visual);
    }
    return format_.visual != 0 && format_.bitsPerPixel >= 16;
}

bool CXcbConnection::check(xcb_void_cookie_t cookie) const
{
    if (!isAlive()) {
        return false;
    }
    const XcbPtr<xcb_generic_error_t> error(xcb_request_check(connection_, cookie));
    return !error && isAlive();
}

// One at a time and by their positions: a handler may add requests, or close the connection.
void CXcbConnection::pollReplies()
{
    for (std::size_t i = 0; connection_ && i < pending_.size();) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (!xcb_poll_for_reply(connection_, pending_[i].sequence, &reply, &error)) {
            ++i;
            continue;
        }
        const XcbPtr<void> ownedReply(reply);
        const XcbPtr<xcb_generic_error_t> ownedError(error);
        const ReplyHandler handler = std::move(pending_[i].handler);
        pending_.erase(pending_.begin() + static_cast<std::ptrdiff_t>(i));
        handler(reply);
    }
}

void CXcbConnection::waitReplies()
{
    const CBrokenPipeGuard guard;
    for (Pending& pending : std::exchange(pending_, {})) {
        struct
        {
            unsigned sequence;
        } const cookie{pending.sequence};
        pending.handler(wait<void>(cookie).get());
    }
}

CBrokenPipeGuard::CBrokenPipeGuard()
{
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &oldMask_);
}

CBrokenPipeGuard::~CBrokenPipeGuard()
{
    if (!wasPending_) {
        sigset_t pipe;
        sigemptyset(&pipe);
        sigaddset(&pipe, SIGPIPE);
        constexpr timespec kNoWait{};
        while (sigtimedwait(&pipe, nullptr, &kNoWait) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &oldMask_, nullptr);
}

} // namespace qel::platform
