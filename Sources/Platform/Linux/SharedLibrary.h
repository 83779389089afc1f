// Symbols of libraries that a machine may lack.
#pragma once

#include <dlfcn.h>

#include <type_traits>

namespace qel::platform {

// Opens a library for good: it may keep state of its own, and so may the host that uses it too.
inline void* openSharedLibrary(const char* name)
{
    return dlopen(name, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
}

// False, and null in `out`, when the library is null or has no such symbol.
template <typename Pointer>
bool findSymbol(void* library, const char* name, Pointer& out)
{
    static_assert(std::is_pointer_v<Pointer>);
    out = library ? reinterpret_cast<Pointer>(dlsym(library, name)) : nullptr;
    return out != nullptr;
}

} // namespace qel::platform
