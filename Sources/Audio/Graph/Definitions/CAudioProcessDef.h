// Definition of a compound process: children, links between them, bypass states.
#pragma once

#include "Definitions/CAudioProcessDefBase.h"

#include <vector>

namespace qel {

class CAudioProcessBypassStateDef;
class CAudioProcessLinkDef;

// Tag audio:process-def. Sorts its children by class into definitions of child processes, links and bypass
// states, each in the order of the tree; children of other classes (parameters, for instance) stay out of the
// lists. This happens in initChilds, when all children are ready, so a link may name a child that comes after
// it; the lists are empty before. Children are not added or removed afterwards, and the pointers are valid as
// long as the definition lives.
//
// initChilds fails if a link names no child process of this compound.
class CAudioProcessDef : public CAudioProcessDefBase
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError initChilds() override;
    // A CAudioProcess, a CAudioProcessStack if isStacked(), a CAudioProcessOverlap if isOverlapped().
    std::unique_ptr<CAudioProcessBase> createProcess() const override;

    // Children are chained in their order, from the compound's input to its output.
    bool isAutoLinks() const { return isAutoLinks_; }
    // Attribute `is-overlapped`, for the root of a graph: changes of rates and routes are faded.
    bool isOverlapped() const { return isOverlapped_; }

    // Prototypes are among them.
    const std::vector<const CAudioProcessDefBase*>& processDefs() const { return processDefs_; }
    const std::vector<const CAudioProcessLinkDef*>& linkDefs() const { return linkDefs_; }
    const std::vector<const CAudioProcessBypassStateDef*>& bypassStateDefs() const
    {
        return bypassStateDefs_;
    }
    // The child process definition of this name, or null.
    const CAudioProcessDefBase* findProcessDef(const CString& name) const;

    // Fails on shapes that no run-time class has: frequency bands, and stacks whose elements are not the
    // channel groups. Asked by the process when it is built.
    CError checkShape() const;

private:
    void sortChildren();

    bool isAutoLinks_ = true;
    bool isOverlapped_ = false;
    std::vector<const CAudioProcessDefBase*> processDefs_;
    std::vector<const CAudioProcessLinkDef*> linkDefs_;
    std::vector<const CAudioProcessBypassStateDef*> bypassStateDefs_;
};

} // namespace qel
