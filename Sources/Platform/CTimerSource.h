// One repeating timer on an event loop.
#pragma once

#include "CEventLoop.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace qel {

class CSystemTimer;
struct TimerEntry;

// Calls a function every so many milliseconds on the loop's owner thread, to which all calls here belong as
// well. create() once, then start() and stop() at will. A tick is never entered twice, and ticks missed while
// nothing ran the loop are not made up. Inside its own tick a timer may be started, stopped or destroyed; so
// may the loop, after which the timer no longer ticks. Errors are the system's numbers.
class CTimerSource
{
public:
    CTimerSource();
    CTimerSource(const CTimerSource&) = delete;
    CTimerSource& operator=(const CTimerSource&) = delete;
    ~CTimerSource();

    [[nodiscard]] int create(CEventLoop& loop);
    // The first tick comes one interval from now, also when the timer was running already.
    [[nodiscard]] int start(std::uint32_t intervalMs, std::function<void()> tick);
    void stop();
    bool isRunning() const;

private:
    std::weak_ptr<CLoopState> loop_;
    std::shared_ptr<TimerEntry> entry_;
    std::unique_ptr<CSystemTimer> systemTimer_;
};

} // namespace qel
