// Loads Xlib.
#include "X11Library.h"

#include <dlfcn.h>

namespace qel::platform {

namespace {

template <typename Function>
bool find(void* library, const char* name, Function& out)
{
    out = reinterpret_cast<Function>(dlsym(library, name));
    return out != nullptr;
}

} // namespace

bool X11Library::load()
{
    void* library = dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        return false;
    }
    static_cast<void>(find(library, "XSetIOErrorExitHandler", XSetIOErrorExitHandler));
    bool isComplete = true;
#define QEL_X11_FIND(name) isComplete = find(library, #name, name) && isComplete;
    QEL_X11_FUNCTIONS(QEL_X11_FIND)
#undef QEL_X11_FIND
    dlclose(library);
    return isComplete;
}

} // namespace qel::platform
