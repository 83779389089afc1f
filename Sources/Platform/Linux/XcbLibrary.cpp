// Loads the X client libraries.
#include "XcbLibrary.h"

#include "SharedLibrary.h"

namespace qel::platform {

#define QEL_DEFINE_POINTER(name) std::add_pointer_t<decltype(::name)> name = nullptr;
QEL_XCB_FUNCTIONS(QEL_DEFINE_POINTER)
QEL_XCB_SHM_FUNCTIONS(QEL_DEFINE_POINTER)
QEL_XCB_RANDR_FUNCTIONS(QEL_DEFINE_POINTER)
QEL_XCB_CURSOR_FUNCTIONS(QEL_DEFINE_POINTER)
QEL_XCB_XKB_FUNCTIONS(QEL_DEFINE_POINTER)
QEL_XKB_FUNCTIONS(QEL_DEFINE_POINTER)
QEL_XKB_X11_FUNCTIONS(QEL_DEFINE_POINTER)
#undef QEL_DEFINE_POINTER

namespace {

struct Loaded
{
    bool hasXcb = true;
    bool hasShm = true;
    bool hasRandr = true;
    bool hasCursor = true;
    bool hasXkb = true;
};

Loaded load()
{
    Loaded loaded;
    void* library = nullptr;
    bool* isComplete = nullptr;
    const auto begin = [&](const char* name, bool& complete) {
        library = openSharedLibrary(name);
        isComplete = &complete;
    };
#define QEL_FIND(name) *isComplete = findSymbol(library, #name, name) && *isComplete;
    begin("libxcb.so.1", loaded.hasXcb);
    QEL_XCB_FUNCTIONS(QEL_FIND)
    begin("libxcb-shm.so.0", loaded.hasShm);
    QEL_XCB_SHM_FUNCTIONS(QEL_FIND)
    begin("libxcb-randr.so.0", loaded.hasRandr);
    QEL_XCB_RANDR_FUNCTIONS(QEL_FIND)
    begin("libxcb-cursor.so.0", loaded.hasCursor);
    QEL_XCB_CURSOR_FUNCTIONS(QEL_FIND)
    begin("libxcb-xkb.so.1", loaded.hasXkb);
    QEL_XCB_XKB_FUNCTIONS(QEL_FIND)
    begin("libxkbcommon.so.0", loaded.hasXkb);
    QEL_XKB_FUNCTIONS(QEL_FIND)
    begin("libxkbcommon-x11.so.0", loaded.hasXkb);
    QEL_XKB_X11_FUNCTIONS(QEL_FIND)
#undef QEL_FIND
    return loaded;
}

const Loaded& loaded()
{
    static const Loaded instance = load();
    return instance;
}

} // namespace

bool loadXcb()
{
    return loaded().hasXcb;
}

bool hasXcbShm()
{
    return loaded().hasShm;
}

bool hasXcbRandr()
{
    return loaded().hasRandr;
}

bool hasXcbCursor()
{
    return loaded().hasCursor;
}

bool hasXkb()
{
    return loaded().hasXkb;
}

} // namespace qel::platform
