// The timers of a window.
#pragma once

#include "CObject.h"

namespace qel {

// Children of tag "core:timer", which are there as long as they are needed.
class CWindowTimers
{
public:
    static constexpr const char* kRender = "render-timer";
    static constexpr const char* kGradient = "gradient-timer";
    static constexpr const char* kCursor = "cursor-timer";
    static constexpr const char* kDeactivate = "deactivate-timer";
    static constexpr const char* kAutoClick = "auto-click-timer";

    // The ticks go to event handlers of `owner`.
    explicit CWindowTimers(CObject& owner) : owner_(owner) {}

    // Does nothing if it runs. A rate that is not positive never ticks.
    CError start(const char* name, double fps, const char* handler);
    void stop(const char* name);
    void stopAll();

private:
    CObject& owner_;
};

} // namespace qel
