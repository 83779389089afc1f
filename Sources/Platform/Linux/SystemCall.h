// Helpers around Linux system calls.
#pragma once

#include <cerrno>
#include <string>

namespace qel::platform {

// Repeats a call that a signal interrupted. The call returns -1 on failure, with the reason in errno.
template <typename Call>
auto retryInterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

// A NUL inside a path would silently cut it short and name another file.
inline bool isUsablePath(const std::string& path)
{
    return path.find('\0') == std::string::npos;
}

} // namespace qel::platform
