// A list of kernel calls that can be run again.
#pragma once

#include "CKernelContext.h"

#include <vector>

namespace qel {

// Records the calls of a context and runs them again without the graph, so that a benchmark can tell the time
// of the kernels from that of the graph around them. Set as the context's observer for as long as it is to
// record; recording allocates, so it is for tools. A replay works on the buffers as they are then: state
// operands go on from where they stand, and operands that the graph filled by hand keep their last contents.
class CKernelRecording final : public CKernelObserver
{
public:
    void beforeCall(const CKernelCall& call) override { calls_.push_back(call); }

    const std::vector<CKernelCall>& calls() const { return calls_; }
    void clear() { calls_.clear(); }
    // Looks up the operands' memory anew: needed once before replay if the pool has grown since.
    void resolve(const CKernelContext& context);
    void replay() const;

private:
    std::vector<CKernelCall> calls_;
};

} // namespace qel
