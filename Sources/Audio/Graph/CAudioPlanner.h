// Decides when the steps of a graph are run from a plan, and when a plan is made.
#pragma once

#include "CAudioGraph.h"
#include "CAudioProcessBase.h"
#include "CAudioStepPlan.h"

namespace qel {

class CAudioPlanBuilder;

// Works for the root of a graph, which asks it at every call of process(). When the graph is steady for long
// enough the next step is written down and a plan made of it. From then on steps are run from the plan until
// a fade ends, a change comes that the processes cannot take up as they stand, the streams are others, or
// somebody needs the processes themselves; leave() then brings them to where they would be. A step from the
// plan gives the same samples and states to the last bit.
//
// Audio thread; owned by the root.
class CAudioPlanner
{
public:
    CAudioPlanner(CAudioProcessBase& root, CAudioGraph& graph);
    CAudioPlanner(const CAudioPlanner&) = delete;
    CAudioPlanner& operator=(const CAudioPlanner&) = delete;

    // Runs the step that the root's inputs hold, if there is a plan for it. Otherwise the root does, between
    // beginStep() and endStep().
    bool runStep();
    // `inner` is the graph of the processes that will work.
    void beginStep(CAudioGraph& inner);
    // The next step may be no longer.
    int longestStep() const;
    // What they put out lies in `drain`.
    void takeOutputs(const CAudioLink& drain);
    void endStep();

    // Ends the plan, if there is one: called before anything but a step happens to the root.
    void leave();

private:
    // Writing a step down takes a few times as long as others, so a plan has to be good for so much.
    static constexpr int kSamplesWanted = 256;
    static constexpr int kStepsWanted = 2;
    // A shorter one does not show what grows with its length, and a longer one shows no more.
    static constexpr int kStepWritten = 4;
    // Where no plan can be made, or none lasts, it is tried less and less often, in samples.
    static constexpr int kShortestQuiet = 512;
    static constexpr int kLongestQuiet = 1 << 14;

    struct Channel
    {
        int port;
        int number;
        const CAudioStreamFormat* format;
    };
    using Channels = CInlineArray<Channel, 16>;

    bool mayPlan() const { return graph_.usesPlans && !graph_.kernels.hasObserver(); }
    // Length of the step that lies at the inputs as one piece; 0 if it does not.
    int offered() const;
    bool isSameInput() const;
    // Since it was asked last.
    bool haveChangesCome();
    bool takeUpChanges();
    void tellProcesses();
    std::int64_t steadySamples() const;
    void lookAhead();
    void waitLonger();
    void readInputs();
    bool runFromPlan(int count);
    void handOn(int count, std::span<const CBufferRef> signals);
    void makePlan();

    CAudioProcessBase& root_;
    CAudioGraph& graph_;
    CAudioStepPlan plan_;
    CAudioGraph* inner_ = nullptr; // that the plan is of
    Channels inputs_;
    Channels outputs_;
    std::int64_t planned_ = 0; // samples that the processes do not know of yet
    int stepsPlanned_ = 0;
    std::int64_t steady_ = 0; // samples for which the graph will be so

    std::uint64_t arrivals_ = 0; // of changes, as they were at the last step
    int quietSamples_ = 0;       // since the last plan, or a change that ended its hopes
    int quietWanted_ = 0;
    bool isRipe_ = false; // the next step may be written down

    // While a step is written down.
    CAudioPlanBuilder* builder_ = nullptr;
    int count_ = 0; // of the step at hand
    int stepsWritten_ = 0;
    bool hasAllOutputs_ = false;
    CInlineArray<CBufferRef, 16> outputBuffers_;
};

} // namespace qel
