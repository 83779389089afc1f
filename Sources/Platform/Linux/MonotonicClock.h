// Time that never goes back.
#pragma once

#include <chrono>

namespace qel::platform {

inline double monotonicSec()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceStart).count();
}

} // namespace qel::platform
