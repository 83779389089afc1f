// The owner thread's queue of posted calls and timers.
#pragma once

#include <functional>
#include <memory>

namespace qel {

class CLoopState;

// Carries calls from any thread to the thread that made the loop, in the order they were posted, and runs the
// timers (CTimerSource) of that thread. On Windows a hidden window of the bridge class lets the host's own
// message loop run both, so the window classes must be registered first; on Linux, and wherever no message
// loop runs, they run from drain(). A call may post, drain again (the nested drain goes on with what comes
// next), or destroy the loop. Calls still waiting when the loop is destroyed are dropped without being run.
class CEventLoop
{
public:
    using Call = std::function<void()>;
    using Clock = std::function<double()>; // seconds; never goes back

    CEventLoop();
    CEventLoop(const CEventLoop&) = delete;
    CEventLoop& operator=(const CEventLoop&) = delete;
    ~CEventLoop();

    // --- any thread
    // 0, or the system's error number, and then the call will not run. A loop whose window could not be made
    // returns the error of that from every post.
    [[nodiscard]] int post(Call call);
    bool isOwnerThread() const;

    // --- owner thread
    // Runs all calls posted before now, then all timers that are due. What is posted meanwhile waits for the
    // next drain.
    void drain();
    // Time for the timers; empty for the system's monotonic clock. Timers that run keep the time that they
    // have left. Tests move it by hand.
    void setClock(Clock nowSec);

private:
    friend class CTimerSource;

    std::shared_ptr<CLoopState> state_;
};

} // namespace qel
