// The failure window in plain X11: text, details, and a button to close it.
#include "CSystemFailureWindow.h"

#include "CX11Text.h"
#include "X11Library.h"

#include <X11/Xatom.h>
#include <X11/keysym.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace qel::platform {

namespace {

constexpr int kInitialWidthPx = 640;
constexpr int kInitialHeightPx = 400;
constexpr int kMarginPx = 14;
constexpr int kButtonWidthPx = 96;
constexpr int kButtonHeightPx = 28;

constexpr unsigned long kTextColour = 0x202020;
constexpr unsigned long kBackgroundColour = 0xECECEC;

// The last one is built into every X server.
constexpr std::array kFontNames = {
    "-*-verdana-medium-r-normal-*-12-*-*-*-*-*-iso10646-1",
    "-misc-fixed-medium-r-semicondensed-*-13-*-*-*-*-*-iso10646-1",
    "fixed",
};

// While one exists, errors of its display are dropped, and the loss of its server is noted; Xlib's own
// handlers would end the host. Handlers are the process's, so errors of the host's displays go to those that
// stood, which come back at the end.
class CX11ErrorScope
{
public:
    CX11ErrorScope(const X11Library& x11, Display* display) : x11_(x11)
    {
        ownDisplay_ = display;
        previous_ = x11_.XSetErrorHandler(&handle);
        if (x11_.XSetIOErrorExitHandler) {
            previousIo_ = x11_.XSetIOErrorHandler(&handleIo);
            x11_.XSetIOErrorExitHandler(display, &noteLoss, this);
        }
    }
    CX11ErrorScope(const CX11ErrorScope&) = delete;
    CX11ErrorScope& operator=(const CX11ErrorScope&) = delete;
    ~CX11ErrorScope()
    {
        x11_.XSetErrorHandler(previous_);
        if (x11_.XSetIOErrorExitHandler) {
            x11_.XSetIOErrorHandler(previousIo_);
        }
        ownDisplay_ = nullptr;
    }

    bool isServerLost() const { return isServerLost_; }

private:
    static int handle(Display* display, XErrorEvent* event)
    {
        return display == ownDisplay_ || !previous_ ? 0 : previous_(display, event);
    }
    static int handleIo(Display* display)
    {
        return display == ownDisplay_ || !previousIo_ ? 0 : previousIo_(display);
    }
    static void noteLoss(Display* /*display*/, void* scope)
    {
        static_cast<CX11ErrorScope*>(scope)->isServerLost_ = true;
    }

    const X11Library& x11_;
    bool isServerLost_ = false;
    static inline Display* ownDisplay_ = nullptr;
    static inline XErrorHandler previous_ = nullptr;
    static inline XIOErrorHandler previousIo_ = nullptr;
};

// One window on a display of its own, shown by run() until the user closes it or the server goes away.
class CX11FailureWindow
{
public:
    CX11FailureWindow(const X11Library& x11, Display* display, const CX11ErrorScope& errors, std::string text,
                      std::string details)
        : x11_(x11), display_(display), errors_(errors), text_(std::move(text)), details_(std::move(details))
    {}
    CX11FailureWindow(const CX11FailureWindow&) = delete;
    CX11FailureWindow& operator=(const CX11FailureWindow&) = delete;
    ~CX11FailureWindow();

    bool open(const std::string& title);
    void run();

private:
    void setTitle(const std::string& title);
    void keepAbove();
    void handle(XEvent& event);
    void draw();
    int drawLines(const std::string& text, int left, int top, int width, int bottom);
    int buttonLeft() const { return (width_ - kButtonWidthPx) / 2; }
    int buttonTop() const { return height_ - kMarginPx - kButtonHeightPx; }
    bool isOnButton(int x, int y) const;
    Atom atom(const char* name) { return x11_.XInternAtom(display_, name, False); }

    const X11Library& x11_;
    Display* const display_;
    const CX11ErrorScope& errors_;
    const std::string text_;
    const std::string details_;
    Window window_ = 0;
    GC graphics_ = nullptr;
    XFontStruct* font_ = nullptr;
    Atom deleteWindow_ = 0;
    int width_ = kInitialWidthPx;
    int height_ = kInitialHeightPx;
    bool isOpen_ = false; // cleared by the buttons and the keys
};

CX11FailureWindow::~CX11FailureWindow()
{
    if (font_) {
        x11_.XFreeFont(display_, font_);
    }
    if (graphics_) {
        x11_.XFreeGC(display_, graphics_);
    }
    if (window_) {
        x11_.XDestroyWindow(display_, window_);
    }
}

bool CX11FailureWindow::open(const std::string& title)
{
    for (std::size_t i = 0; i < kFontNames.size() && !font_; ++i) {
        font_ = x11_.XLoadQueryFont(display_, kFontNames[i]);
    }
    window_ = x11_.XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, kInitialWidthPx,
                                       kInitialHeightPx, 0, kTextColour, kBackgroundColour);
    if (!font_ || !window_) {
        return false;
    }
    XGCValues values{};
    values.foreground = kTextColour;
    values.background = kBackgroundColour;
    values.font = font_->fid;
    graphics_ = x11_.XCreateGC(display_, window_, GCForeground | GCBackground | GCFont, &values);
    setTitle(title);
    keepAbove();
    deleteWindow_ = atom("WM_DELETE_WINDOW");
    x11_.XSetWMProtocols(display_, window_, &deleteWindow_, 1);
    x11_.XSelectInput(display_, window_, ExposureMask | StructureNotifyMask | KeyPressMask | ButtonPressMask);
    x11_.XMapRaised(display_, window_);
    x11_.XSync(display_, False);
    isOpen_ = true;
    return true;
}

void CX11FailureWindow::setTitle(const std::string& title)
{
    x11_.XStoreName(display_, window_, title.c_str());
    x11_.XChangeProperty(display_, window_, atom("_NET_WM_NAME"), atom("UTF8_STRING"), 8, PropModeReplace,
                         reinterpret_cast<const unsigned char*>(title.data()),
                         static_cast<int>(title.size()));
}

void CX11FailureWindow::keepAbove()
{
    const Atom above = atom("_NET_WM_STATE_ABOVE");
    x11_.XChangeProperty(display_, window_, atom("_NET_WM_STATE"), XA_ATOM, 32, PropModeReplace,
                         reinterpret_cast<const unsigned char*>(&above), 1);
}

// Waits by poll() and reads only what is pending: XNextEvent() on a connection that broke has no event to
// return.
void CX11FailureWindow::run()
{
    while (isOpen_ && !errors_.isServerLost()) {
        while (isOpen_ && x11_.XPending(display_) > 0) {
            XEvent event;
            x11_.XNextEvent(display_, &event);
            handle(event);
        }
        if (!isOpen_ || errors_.isServerLost()) {
            return;
        }
        pollfd connection{ConnectionNumber(display_), POLLIN, 0};
        if (poll(&connection, 1, -1) < 0 && errno != EINTR) {
            return;
        }
    }
}

void CX11FailureWindow::handle(XEvent& event)
{
    switch (event.type) {
    case Expose:
        if (event.xexpose.count == 0) {
            draw();
        }
        break;
    case ConfigureNotify:
        width_ = event.xconfigure.width;
        height_ = event.xconfigure.height;
        break;
    case KeyPress: {
        const KeySym key = x11_.XLookupKeysym(&event.xkey, 0);
        isOpen_ = key != XK_Escape && key != XK_Return && key != XK_KP_Enter;
        break;
    }
    case ButtonPress:
        isOpen_ = !isOnButton(event.xbutton.x, event.xbutton.y);
        break;
    case ClientMessage:
        isOpen_ = static_cast<Atom>(event.xclient.data.l[0]) != deleteWindow_;
        break;
    case DestroyNotify:
        window_ = 0;
        isOpen_ = false;
        break;
    default:
        break;
    }
}

bool CX11FailureWindow::isOnButton(int x, int y) const
{
    return x >= buttonLeft() && x < buttonLeft() + kButtonWidthPx && y >= buttonTop() &&
           y < buttonTop() + kButtonHeightPx;
}

void CX11FailureWindow::draw()
{
    x11_.XClearWindow(display_, window_);
    const int innerWidth = width_ - 2 * kMarginPx;
    const int boxBottom = buttonTop() - kMarginPx;
    const int boxTop = drawLines(text_, kMarginPx, kMarginPx, innerWidth, boxBottom) + kMarginPx;
    if (boxTop < boxBottom && innerWidth > 2 * kMarginPx) {
        x11_.XDrawRectangle(display_, window_, graphics_, kMarginPx, boxTop,
                            static_cast<unsigned>(innerWidth), static_cast<unsigned>(boxBottom - boxTop));
        drawLines(details_, 2 * kMarginPx, boxTop + kMarginPx / 2, innerWidth - 2 * kMarginPx,
                  boxBottom - kMarginPx / 2);
    }
    x11_.XDrawRectangle(display_, window_, graphics_, buttonLeft(), buttonTop(), kButtonWidthPx,
                        kButtonHeightPx);
    const X11Line label = x11Text("Close");
    const int length = static_cast<int>(label.size());
    const int labelLeft =
        buttonLeft() + (kButtonWidthPx - x11_.XTextWidth16(font_, label.data(), length)) / 2;
    const int baseline = buttonTop() + (kButtonHeightPx + font_->ascent - font_->descent) / 2;
    x11_.XDrawString16(display_, window_, graphics_, labelLeft, baseline, label.data(), length);
}

// Draws as many lines as end above `bottom`, the last of them "..." when there are more. Returns where they
// end.
int CX11FailureWindow::drawLines(const std::string& text, int left, int top, int width, int bottom)
{
    const int lineHeight = font_->ascent + font_->descent + 2;
    std::vector<X11Line> lines = wrapX11Text(x11_, font_, text, width);
    const auto room = static_cast<std::size_t>(std::max(0, (bottom - top) / lineHeight));
    if (lines.size() > room) {
        lines.resize(room);
        if (!lines.empty()) {
            lines.back() = x11Text("...");
        }
    }
    int y = top;
    for (const X11Line& line : lines) {
        x11_.XDrawString16(display_, window_, graphics_, left, y + font_->ascent, line.data(),
                           static_cast<int>(line.size()));
        y += lineHeight;
    }
    return y;
}

void writeToStandardError(const std::string& title, const std::string& text, const std::string& details)
{
    std::fprintf(stderr, "%s\n%s\n%s\n", title.c_str(), text.c_str(), details.c_str());
}

} // namespace

void showSystemFailureWindow(const std::string& title, const std::string& text, const std::string& details)
{
    writeToStandardError(title, text, details);
    X11Library x11;
    Display* display = x11.load() ? x11.XOpenDisplay(nullptr) : nullptr;
    if (!display) {
        return;
    }
    const CX11ErrorScope errors(x11, display);
    {
        CX11FailureWindow window(x11, display, errors, text, details);
        if (window.open(title)) {
            window.run();
        }
    }
    x11.XCloseDisplay(display); // waits for the answers, so errors still come while the scope stands
}

} // namespace qel::platform
