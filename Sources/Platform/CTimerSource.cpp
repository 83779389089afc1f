// Starts and stops of a timer; the loop decides when it ticks.
#include "CTimerSource.h"

#include "CLoopState.h"

#include <cerrno>
#include <utility>

namespace qel {

CTimerSource::CTimerSource() = default;

CTimerSource::~CTimerSource()
{
    stop();
}

int CTimerSource::create(CEventLoop& loop)
{
    stop();
    loop_ = loop.state_;
    entry_ = std::make_shared<TimerEntry>();
    // The system's timer and drain() may both come for the same tick; whoever is second finds the timer
    // re-armed. The system's timer keeps its own beat on a coarse clock, so it counts from half an interval
    // on: turned away, its tick would be lost for a whole one.
    const auto onTick = [weakLoop = loop_, weakEntry = std::weak_ptr(entry_)] {
        const auto state = weakLoop.lock();
        const auto entry = weakEntry.lock();
        if (state && entry) {
            state->runTimer(*entry, entry->intervalSec / 2);
        }
    };
    return createSystemTimer(onTick, systemTimer_);
}

int CTimerSource::start(std::uint32_t intervalMs, std::function<void()> tick)
{
    const auto loop = loop_.lock();
    if (!loop) {
        return EINVAL;
    }
    entry_->tick = std::make_shared<const std::function<void()>>(std::move(tick));
    entry_->intervalSec = intervalMs / 1000.0;
    entry_->dueSec = loop->nowSec() + entry_->intervalSec;
    entry_->isRunning = true;
    loop->addTimer(entry_);
    const int error = systemTimer_ ? systemTimer_->start(intervalMs) : 0;
    if (error) {
        stop();
    }
    return error;
}

void CTimerSource::stop()
{
    if (!entry_) {
        return;
    }
    if (systemTimer_) {
        systemTimer_->stop();
    }
    entry_->isRunning = false;
    entry_->tick = nullptr;
    if (const auto loop = loop_.lock()) {
        loop->removeTimer(entry_);
    }
}

bool CTimerSource::isRunning() const
{
    return entry_ && entry_->isRunning;
}

} // namespace qel
