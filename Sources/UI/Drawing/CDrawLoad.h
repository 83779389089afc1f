// What drawing costs, and the clock that frames go by.
#pragma once

#include "CString.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace qel {

// Process-wide state that several windows share in turn; for the window's thread.
namespace drawing {

// Pixels touched and fixed costs since the last reset, added by every painting operation.
inline constexpr std::int64_t kBlitCost = 500;
inline constexpr std::int64_t kFillCost = 200;
void addDrawCost(std::int64_t cost);
std::int64_t getDrawCounter();
void resetDrawCounter();

// Time of the present frame, in seconds since the system started. A window sets it when a frame begins.
void setFrameTime(double seconds);
double getFrameTime();

} // namespace drawing

// The load of a window's last frames, as a window publishes it.
class CDrawLoad
{
public:
    static constexpr std::size_t kHistoryLength = 21;
    static constexpr std::size_t kRecentLength = 5;
    static constexpr double kFullLoadCost = 2e6;

    // Takes up the draw counter of the frame that has ended.
    void addFrame();
    // Percent: the smaller of the mean of the history and the least of the last five frames.
    double getLoad() const;
    // The same as text: four decimals and "%".
    CString getText() const;
    // 1 while static views were redrawn just now and drawing costs nothing, down to 0 two seconds later or at
    // full load. Times in seconds.
    double getStaticViewUpdate(double now, double lastStaticUpdate) const;

private:
    double mean() const;

    std::array<double, kHistoryLength> history_{}; // percent, the oldest first
    std::size_t count_ = 0;
};

} // namespace qel
