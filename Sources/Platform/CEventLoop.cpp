// Posted calls and the run order of calls and timers.
#include "CEventLoop.h"

#include "CLoopState.h"
#include "ThreadId.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace qel {

namespace {

// A clock that adds up small steps may end a rounding error short of the time a timer is due.
constexpr double kClockToleranceSec = 1e-6;

double monotonicSec()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceStart).count();
}

} // namespace

CEventLoop::CEventLoop() : state_(std::make_shared<CLoopState>())
{
    state_->open();
}

CEventLoop::~CEventLoop()
{
    state_->close();
}

int CEventLoop::post(Call call)
{
    return state_->post(std::move(call));
}

bool CEventLoop::isOwnerThread() const
{
    return state_->isOwnerThread();
}

void CEventLoop::drain()
{
    const std::shared_ptr<CLoopState> keptAlive = state_;
    keptAlive->drain();
}

void CEventLoop::setClock(Clock nowSec)
{
    state_->setClock(std::move(nowSec));
}

CLoopState::CLoopState() : ownerThread_(platform::currentThreadId()), clock_(monotonicSec) {}

void CLoopState::open()
{
    const auto onWake = [weak = weak_from_this()] {
        if (const auto state = weak.lock()) {
            state->runFirstPosted();
        }
    };
    openError_ = createSystemWake(onWake, wake_);
}

void CLoopState::close()
{
    wake_.reset();
    std::vector<std::shared_ptr<TimerEntry>> timers;
    std::swap(timers, timers_);
    for (const auto& timer : timers) {
        timer->isRunning = false;
    }
    std::deque<Posted> dropped; // what the calls hold is freed after the section is left
    const CLock lock(section_);
    std::swap(dropped, posted_);
}

int CLoopState::post(CEventLoop::Call call)
{
    const CLock lock(section_);
    if (openError_) {
        return openError_;
    }
    // One message stands for all waiting calls, so a flood of posts cannot fill the thread's message queue.
    if (wake_ && !isWakePending_) {
        if (const int error = wake_->signal()) {
            return error;
        }
        isWakePending_ = true;
    }
    posted_.push_back({nextNumber_++, std::move(call)});
    return 0;
}

bool CLoopState::isOwnerThread() const
{
    return platform::currentThreadId() == ownerThread_;
}

void CLoopState::drain()
{
    std::uint64_t endNumber = 0;
    {
        const CLock lock(section_);
        endNumber = nextNumber_;
    }
    // One at a time, so that a nested drain goes on in order and leaves nothing for this one to repeat.
    CEventLoop::Call call;
    while (takePostedBefore(endNumber, call)) {
        call();
        call = nullptr;
    }
    runDueTimers();
}

bool CLoopState::takePostedBefore(std::uint64_t endNumber, CEventLoop::Call& out)
{
    const CLock lock(section_);
    if (posted_.empty() || posted_.front().number >= endNumber) {
        return false;
    }
    out = std::move(posted_.front().call);
    posted_.pop_front();
    return true;
}

// The message loop's side: one call a message. The next message is asked for before the call runs, since the
// call may enter a message loop of its own (a dialog), in which later calls must still arrive in order.
void CLoopState::runFirstPosted()
{
    CEventLoop::Call call;
    {
        const CLock lock(section_);
        isWakePending_ = false;
        if (posted_.empty()) {
            return;
        }
        call = std::move(posted_.front().call);
        posted_.pop_front();
        isWakePending_ = !posted_.empty() && wake_->signal() == 0;
    }
    call();
}

void CLoopState::runDueTimers()
{
    auto timers = timers_; // a tick may start, stop or destroy any timer
    std::ranges::stable_sort(timers, {}, &TimerEntry::dueSec);
    for (const auto& timer : timers) {
        runTimer(*timer, kClockToleranceSec);
    }
}

// A late timer ticks once and is due an interval from now: after a pause of the host no burst makes up for
// it.
void CLoopState::runTimer(TimerEntry& timer, double slackSec)
{
    if (!timer.isRunning || timer.isInTick) {
        return;
    }
    const double now = nowSec();
    if (now < timer.dueSec - slackSec) {
        return;
    }
    timer.dueSec = now + timer.intervalSec;
    const auto tick = timer.tick;
    timer.isInTick = true;
    (*tick)();
    timer.isInTick = false;
}

void CLoopState::addTimer(const std::shared_ptr<TimerEntry>& timer)
{
    if (std::ranges::find(timers_, timer) == timers_.end()) {
        timers_.push_back(timer);
    }
}

void CLoopState::removeTimer(const std::shared_ptr<TimerEntry>& timer)
{
    std::erase(timers_, timer);
}

void CLoopState::setClock(CEventLoop::Clock nowSec)
{
    const double before = clock_();
    clock_ = nowSec ? std::move(nowSec) : CEventLoop::Clock(monotonicSec);
    for (const auto& timer : timers_) {
        timer->dueSec += clock_() - before;
    }
}

} // namespace qel
