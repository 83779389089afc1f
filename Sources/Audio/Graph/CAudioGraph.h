// What all processes of one plug-in instance share.
#pragma once

#include "CAudioChunk.h"
#include "CAudioStreamFormat.h"
#include "CKernelContext.h"

namespace qel {

class CAudioParamCollector;
class CAudioParamMark;
class CAudioPlanBuilder;
class CAudioStepPlan;
class CAudioVizCollector;

// The longest span of samples that goes through a graph at once, at whatever rate.
constexpr int kLongestStep = 512;
// The same of steps that are not run from a plan: it bounds nearly all buffers.
constexpr int kLongestOrdinaryStep = static_cast<int>(CKernelContext::kShortSamples);

// Handed to every process of a graph when it is built; outlives them all. The context and the collector
// belong to the instance's object tree.
struct CAudioGraph
{
    CKernelContext& kernels;
    CAudioParamCollector& params;
    // Where meters report to; null: nobody listens.
    CAudioVizCollector* visual = nullptr;
    CAudioFormatTable formats{kernels.memory()};
    CAudioChunkPool chunks{kernels.memory()};
    // Stream time at which the process that is called now starts; set by whoever runs it.
    double positionSec = 0.0;
    // While it is set, streams take up no changes; they wait in the queues.
    bool holdsSettings = false;
    // Goes up whenever a process has taken up changes that the layout may depend on.
    std::uint32_t layoutsTaken = 0;
    // The processes for which changes have come.
    CAudioParamMark* changed = nullptr;
    // Goes up with every step of the whole.
    std::uint32_t steps = 0;
    // Set where a change waits at a process that steps are not cut for.
    bool changesWait = false;
    // While it is set, a step is being written down.
    CAudioPlanBuilder* planBuilder = nullptr;
    // Set while changes are taken up under a plan that runs on: of a state that is changed it has to know.
    CAudioStepPlan* plan = nullptr;
    // Off, every step goes the ordinary way.
    bool usesPlans = true;
    // Steps that were run from plans.
    std::uint64_t plannedSteps = 0;
};

} // namespace qel
