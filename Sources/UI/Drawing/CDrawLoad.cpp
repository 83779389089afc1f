// What drawing costs, and the clock that frames go by.
#include "CDrawLoad.h"

#include "CAttrValue.h"

#include <algorithm>
#include <atomic>
#include <numeric>

namespace qel {

namespace drawing {

namespace {

// Windows of two hosts' threads may meet here; a count that is lost then does no harm.
std::atomic<std::int64_t> drawCounter{0};
std::atomic<double> frameTimeSec{0.0};

} // namespace

void addDrawCost(std::int64_t cost)
{
    drawCounter.store(drawCounter.load(std::memory_order_relaxed) + cost, std::memory_order_relaxed);
}

std::int64_t getDrawCounter()
{
    return drawCounter.load(std::memory_order_relaxed);
}

void resetDrawCounter()
{
    drawCounter.store(0, std::memory_order_relaxed);
}

void setFrameTime(double seconds)
{
    frameTimeSec.store(seconds, std::memory_order_relaxed);
}

double getFrameTime()
{
    return frameTimeSec.load(std::memory_order_relaxed);
}

} // namespace drawing

void CDrawLoad::addFrame()
{
    const double load =
        std::min(100.0, static_cast<double>(drawing::getDrawCounter()) / kFullLoadCost * 100.0);
    if (count_ == kHistoryLength) {
        std::shift_left(history_.begin(), history_.end(), 1);
        --count_;
    }
    history_[count_++] = load;
}

double CDrawLoad::mean() const
{
    const auto end = history_.begin() + static_cast<std::ptrdiff_t>(count_);
    return count_ == 0 ? 0.0 : std::accumulate(history_.begin(), end, 0.0) / static_cast<double>(count_);
}

double CDrawLoad::getLoad() const
{
    if (count_ == 0) {
        return 0.0;
    }
    const auto end = history_.begin() + static_cast<std::ptrdiff_t>(count_);
    const auto recent = end - static_cast<std::ptrdiff_t>(std::min(count_, kRecentLength));
    return std::min(mean(), *std::min_element(recent, end));
}

CString CDrawLoad::getText() const
{
    return CAttrValue(getLoad()).toString() + "%";
}

double CDrawLoad::getStaticViewUpdate(double now, double lastStaticUpdate) const
{
    return 1.0 - std::max(mean() / 100.0, std::min(1.0, (now - lastStaticUpdate) * 0.5));
}

} // namespace qel
