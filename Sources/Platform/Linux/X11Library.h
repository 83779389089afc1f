// The part of Xlib this layer uses, found at run time.
#pragma once

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace qel::platform {

// Xlib's functions under their own names, from libX11 when the machine has it: a library linked against it
// would not even load on a server without X. Once loaded, Xlib stays in the process, since it keeps state of
// its own.
struct X11Library
{
    // False when the library or one of its functions is missing.
    bool load();

// clang-format off
#define QEL_X11_FUNCTIONS(use) \
    use(XChangeProperty) use(XClearWindow) use(XCloseDisplay) use(XCreateGC) \
    use(XCreateSimpleWindow) use(XDestroyWindow) use(XDrawRectangle) use(XDrawString16) \
    use(XFreeFont) use(XFreeGC) use(XInternAtom) use(XLoadQueryFont) use(XLookupKeysym) \
    use(XMapRaised) use(XNextEvent) use(XOpenDisplay) use(XPending) use(XSelectInput) \
    use(XSetErrorHandler) use(XSetIOErrorHandler) use(XSetWMProtocols) use(XStoreName) use(XSync) \
    use(XTextWidth16)
// clang-format on
#define QEL_X11_POINTER(name) decltype(&::name) name = nullptr;
    QEL_X11_FUNCTIONS(QEL_X11_POINTER)
#undef QEL_X11_POINTER

    using IoErrorExit = void (*)(Display* display, void* userData);
    // Null before libX11 1.7, where the loss of the server ends the process come what may.
    void (*XSetIOErrorExitHandler)(Display* display, IoErrorExit handler, void* userData) = nullptr;
};

} // namespace qel::platform
