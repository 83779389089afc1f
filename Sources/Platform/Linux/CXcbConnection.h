// One connection to the X server.
#pragma once

#include "XcbAtoms.h"
#include "XcbLibrary.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace qel::platform {

struct XcbFree
{
    void operator()(void* memory) const { std::free(memory); }
};

// Events and replies are malloc'ed by the library.
template <typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;

// How pixels of a window look to the server.
struct XcbPixelFormat
{
    xcb_visualid_t visual = 0;
    xcb_colormap_t colormap = 0;
    std::uint8_t depth = 0;
    unsigned bitsPerPixel = 0;
    unsigned rowAlignmentBits = 0; // of each row of an image
    bool isMostSignificantFirst = false;
    std::uint32_t redMask = 0;
    std::uint32_t greenMask = 0;
    std::uint32_t blueMask = 0;

    // Four bytes, blue first: the server takes our pixels as they are.
    bool isNative() const;
};

// Owns the connection, interns the atoms, picks the format of pixels, and keeps the requests whose answers
// are still to come. Every request that is not waited for may fail without notice, its error is dropped with
// the events. Without a server, or once it is lost, requests are harmless and answers are null.
class CXcbConnection
{
public:
    // `reply` is null for a request that failed. It may add further requests.
    using ReplyHandler = std::function<void(const void* reply)>;

    CXcbConnection() = default;
    CXcbConnection(const CXcbConnection&) = delete;
    CXcbConnection& operator=(const CXcbConnection&) = delete;
    ~CXcbConnection();

    // Connects to $DISPLAY. Returns 0 or ELIBACC, ECONNREFUSED, or ENODEV for a screen without true colours.
    [[nodiscard]] int open();
    void close();
    bool isAlive() const;

    // Null before open() and after close(), so whoever may be called then asks isAlive() first.
    xcb_connection_t* get() const { return connection_; }
    // The same, to send by: flush() then has something to do.
    xcb_connection_t* out()
    {
        isDirty_ = true;
        return connection_;
    }
    void flush();
    const XcbAtoms& atoms() const { return atoms_; }
    xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }
    const XcbPixelFormat& format() const { return format_; }

    // --- answers that are waited for
    template <typename Reply, typename Cookie>
    XcbPtr<Reply> wait(Cookie cookie) const
    {
        xcb_generic_error_t* error = nullptr;
        void* reply = connection_ ? xcb_wait_for_reply(connection_, cookie.sequence, &error) : nullptr;
        std::free(error);
        return XcbPtr<Reply>(static_cast<Reply*>(reply));
    }
    // Of a checked request without a reply: has the server done it?
    bool check(xcb_void_cookie_t cookie) const;

    // --- answers that come when they come
    template <typename Cookie>
    void whenAnswered(Cookie cookie, ReplyHandler handler)
    {
        pending_.push_back({cookie.sequence, std::move(handler)});
    }
    bool hasPending() const { return !pending_.empty(); }
    void pollReplies();
    void waitReplies(); // for all that are pending now; while nothing of a listener's is among them

private:
    struct Pending
    {
        unsigned sequence;
        ReplyHandler handler;
    };

    void internAtoms();
    bool chooseFormat();

    xcb_connection_t* connection_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
    XcbAtoms atoms_;
    XcbPixelFormat format_;
    bool isDirty_ = false;
    std::vector<Pending> pending_;
};

// Stands around every call that may write to the connection. The library looks for the end of the connection
// before it calls writev(), but a server that goes in between raises SIGPIPE, which would end the host: the
// signal is held back from this thread, and taken off again if it came.
class CBrokenPipeGuard
{
public:
    CBrokenPipeGuard();
    CBrokenPipeGuard(const CBrokenPipeGuard&) = delete;
    CBrokenPipeGuard& operator=(const CBrokenPipeGuard&) = delete;
    ~CBrokenPipeGuard();

private:
    bool wasPending_ = false;
    sigset_t oldMask_{};
};

} // namespace qel::platform
