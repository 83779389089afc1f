// How events reach the tree of an interface.
#pragma once

#include "CObject.h"

namespace qel {

class CEventLoop;

// What a window looks for in its tree: the loop that carries posted events and timers to the tree's thread.
// Stands in the tree in front of everything that has timers.
class CUIEventBridge : public CObject
{
public:
    // Where windows look for it.
    static constexpr const char* kPath = "ui.event-bridge";

    // The loop; null before init and after release.
    virtual CEventLoop* getEventLoop() const = 0;
    // From the editor's idle: delivers what was posted and runs the timers that are due. On systems whose
    // message loop does both by itself there is little left. May release the whole tree.
    virtual void drain() = 0;
};

} // namespace qel
