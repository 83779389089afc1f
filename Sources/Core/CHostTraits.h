// What the process has learned about the host it runs in.
#pragma once

#include <atomic>

namespace qel {

// One host per process, so this is process-wide. Written by each instance as it starts, read from any thread.
class CHostTraits
{
public:
    // The host calls Steinberg its maker: its windows want other handling.
    static bool isSteinberg() { return isSteinberg_.load(std::memory_order_relaxed); }
    static void setSteinberg(bool isSteinberg) { isSteinberg_.store(isSteinberg, std::memory_order_relaxed); }

private:
    static inline std::atomic<bool> isSteinberg_{false};
};

} // namespace qel
