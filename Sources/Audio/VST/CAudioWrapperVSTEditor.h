// The window of one plug-in instance, as a VST host opens it.
#pragma once

#include "AEffEditor.h"
#include "CUserInterface.h"

namespace qel {

class CAudioWrapperVST;

// Builds the whole interface at each opening and ends it at each closing; what has to live on is kept by the
// instance or in the stores. Hosts open twice, close what is not open, destroy the parent first, and call
// idle() from within calls of ours, or never: all of that is harmless.
class CAudioWrapperVSTEditor : public AEffEditor
{
public:
    explicit CAudioWrapperVSTEditor(CAudioWrapperVST& wrapper);
    ~CAudioWrapperVSTEditor() override;

    // Of the window that is open or, with none, of the one that would open now: the interface scale may have
    // been set to another value since.
    bool getRect(ERect** rect) override;
    // Fails quietly where there is no window system, or with a parent that is no window; a fault of the
    // tree is shown to the user.
    bool open(void* parent) override;
    void close() override;
    void idle() override;
    // Only its direction counts.
    bool onWheel(float distance) override;

private:
    CError buildTree(void* parent);
    void updateRect();

    CAudioWrapperVST& wrapper_;
    ERect rect_;
    CUserInterface interface_;
};

} // namespace qel
