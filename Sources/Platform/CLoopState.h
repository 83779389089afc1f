// What a CEventLoop and its timers share. Internal to this layer.
#pragma once

#include "CCriticalSection.h"
#include "CEventLoop.h"
#include "CSystemLoop.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace qel {

// One timer as the loop sees it. The tick is shared, so that a tick that stops or restarts its own timer, or
// destroys it, does not free the function that is running.
struct TimerEntry
{
    std::shared_ptr<const CEventLoop::Call> tick;
    double intervalSec = 0.0;
    double dueSec = 0.0;
    bool isRunning = false;
    bool isInTick = false;
};

// The content of a CEventLoop, kept by a shared pointer that every running drain holds too: a call may then
// destroy its own loop. Only the posted calls are reached by other threads, under the section.
class CLoopState : public std::enable_shared_from_this<CLoopState>
{
public:
    CLoopState();

    void open();  // separate from the constructor: the window refers to the shared pointer
    void close(); // the loop is gone: drops calls, timers and the window

    int post(CEventLoop::Call call);
    bool isOwnerThread() const;

    void drain();
    void runTimer(TimerEntry& timer, double slackSec);
    void addTimer(const std::shared_ptr<TimerEntry>& timer);
    void removeTimer(const std::shared_ptr<TimerEntry>& timer);
    void setClock(CEventLoop::Clock nowSec);
    double nowSec() const { return clock_(); }

private:
    struct Posted
    {
        std::uint64_t number;
        CEventLoop::Call call;
    };

    void runFirstPosted();
    void runDueTimers();
    bool takePostedBefore(std::uint64_t endNumber, CEventLoop::Call& out);

    const std::uint64_t ownerThread_;
    int openError_ = 0;
    std::unique_ptr<CSystemWake> wake_;
    CEventLoop::Clock clock_;
    std::vector<std::shared_ptr<TimerEntry>> timers_;

    CCriticalSection section_; // guards what follows
    std::deque<Posted> posted_;
    std::uint64_t nextNumber_ = 0;
    bool isWakePending_ = false;
};

} // namespace qel
