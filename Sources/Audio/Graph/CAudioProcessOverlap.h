// Two copies of a compound, so that changes of rates and routes can be faded.
#pragma once

#include "CAudioPlanner.h"
#include "CAudioProcess.h"

#include <array>
#include <atomic>

namespace qel {

// Runs one copy of a compound, and keeps a second one that rests with its settings up to date. When the one
// at rest would run at other rates or on other routes (CAudioProcessBase::layout()), nothing inside the one
// at work could lead over: so the other starts afresh on the same input, runs muted until filters and
// envelopes have settled (kSettleSec), is faded in over the old stream, and takes over. Meanwhile the old
// copy keeps the settings it has. A layout that changes while it is muted starts over; one that
// changes during the fade waits for its end. Both copies put out as many samples as they take, so none is
// lost; only the latency of the two differs. Steps are cut to what is kLongestStep at the highest rate
// inside, or kLongestOrdinaryStep where they are not run from a plan.
//
// A layout with groups that prepareGroups() has not made ready waits for them. For the root of a graph. Both
// copies are built at init, so that no change of layout can fail later. While nothing changes, the copy at
// work is run from a plan.
class CAudioProcessOverlap : public CAudioProcessBase
{
public:
    explicit CAudioProcessOverlap(const CAudioProcessDef& def);
    ~CAudioProcessOverlap() override;

    CError init() override;
    CError bindParams() override;
    void followParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void prepareGroups(std::uint32_t groups) override;
    bool process() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    std::uint32_t layout() const override { return copies_[current_].process->layout(); }
    int longestStep() const override { return kLongestStep / rateFactor_; }
    std::int64_t steadySamples(double rateHz) const override;
    bool takeUpSteadily(std::int64_t aheadSamples, double rateHz) override;
    void skip(std::int64_t samples, double rateHz) override;
    void visit(CGraphVisitor& visitor) const override;

    // The copy at work.
    const CAudioProcess& running() const { return *copies_[current_].process; }

protected:
    void beginStep() override;
    int limitStep(int count) const override;
    void step(int count) override;
    void beSilent() override;

private:
    enum class EPhase : std::uint8_t
    {
        kSingle,
        kSettles, // the next copy runs unheard
        kFades
    };
    // A compound with a graph of its own, since each has its own time and may have to hold its settings.
    struct Copy
    {
        std::unique_ptr<CAudioGraph> graph;
        std::unique_ptr<CAudioProcess> process;
        std::vector<std::unique_ptr<CAudioOutputPort>> feeds; // by port
        std::vector<std::unique_ptr<CAudioLink>> feedLinks;
        std::unique_ptr<CAudioLink> drainLink;
    };

    CError build(Copy& copy);
    void addFeeds(Copy& copy);
    void lookForLayout();
    void limitToRates();
    Copy& current() { return copies_[current_]; }
    const Copy& current() const { return copies_[current_]; }
    Copy& other() { return copies_[1 - current_]; }
    const Copy& other() const { return copies_[1 - current_]; }
    void leavePlan();
    void startNext();
    void takeOver();
    void enter(EPhase phase);
    void run(Copy& copy, int count);
    void wireDrain();

    const CAudioProcessDef& compoundDef_;
    std::array<Copy, 2> copies_;
    std::unique_ptr<CAudioInputPort> drain_;
    std::size_t current_ = 0;
    EPhase phase_ = EPhase::kSingle;
    int samplesLeft_ = 0; // of the phase
    std::atomic<std::uint32_t> preparedGroups_{1};
    int rateFactor_ = 1; // of both copies
    std::uint32_t seenChanges_ = 0;
    std::uint32_t ratedChanges_ = ~0U;
    std::uint32_t nextLayout_ = 0;
    std::unique_ptr<CAudioPlanner> planner_; // ends before the copies, whose states it may have to write
};

} // namespace qel
