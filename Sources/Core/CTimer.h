// A timer of a tree.
#pragma once

#include "CObject.h"
#include "CTimerSource.h"

namespace qel {

// Tag `core:timer`. Raises the event "tick" every `interval` seconds, on the tree's thread, from the end of
// applyAttrs on until its release. A changed interval takes effect at once and starts anew. Intervals below
// 10 ms count as 10 ms, as the systems' own timers have it; so does a missing one. A tick may release the
// timer. Needs a tree with an event loop: without one init fails with the error number kNoEventLoop.
class CTimer : public CObject
{
public:
    static constexpr int kNoEventLoop = -1;

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError applyAttrs() override;
    void release() override;

    virtual CError attrInterval();

private:
    CError initTimer();
    void onTick();

    CTimerSource source_;
    double intervalSec_ = 0.0;
    bool isStarted_ = false;
};

} // namespace qel
