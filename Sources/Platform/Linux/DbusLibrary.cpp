// Loads the D-Bus client library.
#include "DbusLibrary.h"

#include "SharedLibrary.h"

namespace qel::platform {

#define QEL_DEFINE_POINTER(name) std::add_pointer_t<decltype(::name)> name = nullptr;
QEL_DBUS_FUNCTIONS(QEL_DEFINE_POINTER)
#undef QEL_DEFINE_POINTER

namespace {

bool findFunctions()
{
    void* library = openSharedLibrary("libdbus-1.so.3");
    bool isComplete = true;
#define QEL_FIND(name) isComplete = findSymbol(library, #name, name) && isComplete;
    QEL_DBUS_FUNCTIONS(QEL_FIND)
#undef QEL_FIND
    return isComplete && dbus_threads_init_default(); // the host may use the library on other threads
}

} // namespace

bool loadDbus()
{
    static const bool isLoaded = findFunctions();
    return isLoaded;
}

} // namespace qel::platform
