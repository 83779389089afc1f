// What the system's own message loop does for an event loop. Internal to this layer.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace qel {

// Asks the owner thread's message loop to call back. At most one request is under way at a time.
class CSystemWake
{
public:
    virtual ~CSystemWake() = default;
    [[nodiscard]] virtual int signal() = 0; // any thread
};

// A repeating timer of the owner thread's message loop.
class CSystemTimer
{
public:
    virtual ~CSystemTimer() = default;
    [[nodiscard]] virtual int
    start(std::uint32_t intervalMs) = 0; // a running timer takes the new interval at once
    virtual void stop() = 0;
};

// Both call back on the thread that makes them, and may be destroyed from inside the callback. Where threads
// have no message loop (Linux) they succeed and leave `out` null; drain() then does all the work.
[[nodiscard]] int createSystemWake(std::function<void()> onWake, std::unique_ptr<CSystemWake>& out);
[[nodiscard]] int createSystemTimer(std::function<void()> onTick, std::unique_ptr<CSystemTimer>& out);

} // namespace qel
