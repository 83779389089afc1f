// The undo store of an instance.
#pragma once

#include "CAudioParamUndoHistory.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <memory>

namespace qel {

// Keeps a bounded history of named steps and walks along it. Base of the audio-side end of the interface,
// which tells the UI in onHistoryChanged(). Attribute: undo-count-max, the most steps a history keeps.
//
// The history belongs to a program; the master registry swaps it when programs or the A/B state do. Control
// threads only. The lock comes after a registry's bank lock and before its parameter map lock and the locks
// of parameters; a registry holds it from its first write to the end of a swap, so that no step is ever
// applied to another program than the one it was made in.
class CAudioParamUndo : public CObject
{
public:
    static constexpr std::int32_t kDefaultCountMax = 32;

    static void buildClassInfo(CClassInfo& info);

    void release() override;

    CCriticalSection& getLock() { return lock_; }

    // Adds a step that has happened: it joins the last one if both allow it, else it replaces what was
    // undone, and the oldest step goes when there are too many. A step without effect is dropped. `locked`:
    // the caller holds the lock.
    void addStep(CAudioParamUndoStep step, bool locked = false);
    // Walks to the state behind that many steps; all writes reach the audio side as one batch. A position out
    // of range is ignored.
    void moveTo(std::int32_t position);
    // "Undo history start", then the names of the steps. Returns the position, an index into the names.
    std::int32_t listSteps(std::vector<CString>& outNames);

    // Makes `history` the current one, null for an empty one, and gives back what was.
    std::unique_ptr<CAudioParamUndoHistory> swapHistory(std::unique_ptr<CAudioParamUndoHistory> history);
    // A copy of the current one; null if nothing was ever added.
    std::unique_ptr<CAudioParamUndoHistory> copyHistory();

protected:
    // The list or the position has changed. The lock may be held.
    virtual void onHistoryChanged() {}

private:
    void appendStep(CAudioParamUndoStep&& step);
    void walkTo(std::int32_t position, CAudioParamContext& context);

    CCriticalSection lock_;
    std::unique_ptr<CAudioParamUndoHistory> history_;
    std::int32_t countMax_ = kDefaultCountMax;
};

} // namespace qel
