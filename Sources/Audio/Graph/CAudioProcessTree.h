// A tree of processes made from a definition, ready to run.
#pragma once

#include "CAudioProcessBase.h"
#include "CAudioProcessParams.h"

namespace qel {

// Builds a process with all below it under a full name, ties it to the instance's parameters and resolves its
// kernels. Owns the root process and the parameter filters; goes before the graph it was built for.
class CAudioProcessTree
{
public:
    CAudioProcessTree() = default;
    ~CAudioProcessTree() { release(); }

    // On error nothing is left behind.
    CError build(CAudioGraph& graph, const CAudioProcessDefBase& def, const CString& fullName);
    void release();

    CAudioProcessBase* root() const { return root_.get(); }

private:
    CError buildRoot(CAudioGraph& graph, const CAudioProcessDefBase& def, const CString& fullName);

    std::unique_ptr<CAudioProcessParams> params_;
    std::unique_ptr<CAudioProcessBase> root_;
};

} // namespace qel
