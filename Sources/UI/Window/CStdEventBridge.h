// The event loop of an interface.
#pragma once

#include "CEventLoop.h"
#include "CUIEventBridge.h"

namespace qel {

// Tag `ui:ui-event-bridge`. Makes a loop and gives it to the tree's notify server; a loop that the tree
// has already is used and left alone. Init fails in a tree without a notify server.
class CStdEventBridge : public CUIEventBridge
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    CEventLoop* getEventLoop() const override;
    void drain() override;

private:
    std::shared_ptr<CEventLoop> loop_; // null for another's
};

} // namespace qel
