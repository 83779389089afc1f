// Whether a step that was written down is like the one that a plan was made of.
#pragma once

#include "CAudioStepPlan.h"
#include "PlanCalls.h"

namespace qel {

// The form of a step is all that a plan depends on but scalars, and where states stand and what is in them:
// kernels, counts, and how the calls hang together. It goes into one number, which two steps have in common
// only where they are of one form: that others meet in 64 bits does not happen.
//
// Lives while a builder looks at a step. Audio thread.
class CAudioPlanForm
{
public:
    CAudioPlanForm(std::span<const plan::Call> calls, std::span<const plan::Buffer> buffers,
                   const CBufferPool& pool)
        : calls_(calls), buffers_(buffers), pool_(pool)
    {}

    // Never 0. `longestRatio` is that of the longest buffer to the step.
    std::uint64_t sum(std::size_t inputs, std::span<const plan::Index> outputs,
                      std::size_t longestRatio) const;
    // Gives a released plan the states and scalars of this step and makes it ready. False if it is of another
    // form, or one of the calls that it leaves out would have to run.
    bool takeOver(CAudioStepPlan& plan, std::uint64_t sum) const;

private:
    // Then calls are to be found that have become alike meanwhile.
    static constexpr int kMostTakeOvers = 16;

    bool standsIn(const plan::Call& call, const plan::Call& other) const;

    std::span<const plan::Call> calls_;
    std::span<const plan::Buffer> buffers_;
    const CBufferPool& pool_;
};

} // namespace qel
