// The clock and the state that one instance's audio side shares with its other threads.
#pragma once

#include "CCriticalSection.h"
#include "CObject.h"

#include <atomic>

namespace qel {

// Tag audio:audio-env; one per instance, owned by its tree. The lock serialises control threads among
// themselves: the audio thread never takes it, and reads and writes the atomic members only.
//
// Attribute: viz-fps, frames a second of visual data.
class CAudioEnv : public CObject
{
public:
    static constexpr double kDefaultVizFps = 30.0;

    static void buildClassInfo(CClassInfo& info);

    CCriticalSection& getLock() { return lock_; }
    double getVizFps() const { return vizFps_; }

    // The audio clock, to which events are referred: seconds of audio that went into the instance.
    double getPositionSec() const { return positionSec_.load(std::memory_order_relaxed); }
    // Audio thread: moves the clock on by one processing call.
    void advance(double seconds)
    {
        positionSec_.store(getPositionSec() + seconds, std::memory_order_relaxed);
    }

    // Up while a processing call runs.
    bool isInProcess() const { return isInProcess_.load(std::memory_order_acquire); }
    void setInProcess(bool inProcess) { isInProcess_.store(inProcess, std::memory_order_release); }

    // Of the whole instance, at the root's output.
    std::int32_t getLatencySamples() const { return latencySamples_.load(std::memory_order_relaxed); }
    void setLatencySamples(std::int32_t samples)
    {
        latencySamples_.store(samples, std::memory_order_relaxed);
    }

    // The channel layout has changed, so that the processes start afresh.
    void requestRestart() { isRestartWanted_.store(true, std::memory_order_release); }
    // True once per request.
    bool takeRestart() { return isRestartWanted_.exchange(false, std::memory_order_acq_rel); }

private:
    CCriticalSection lock_;
    double vizFps_ = kDefaultVizFps;
    std::atomic<double> positionSec_{0.0};
    std::atomic<bool> isInProcess_{false};
    std::atomic<std::int32_t> latencySamples_{0};
    std::atomic<bool> isRestartWanted_{false};
};

} // namespace qel
