// A step of a graph as a list of kernel calls, to be run again without the graph.
#pragma once

#include "CAudioModule.h"
#include "CInlineArray.h"
#include "CKernelContext.h"

#include <cstdint>
#include <span>

namespace qel {

// Made by a CAudioPlanBuilder from what one step ran. It holds as long as nothing but the samples changes;
// whoever runs it has to know. Counts go in proportion to the step, so one plan serves every length. Steps
// are run in pieces, short enough for all buffers between calls to stay in the processor's cache. The states
// are those of the modules, so that the graph can go on behind any step.
//
// A released plan keeps what it was made of: a step of the same form, as the next fade of the same modules
// has, needs other addresses and scalars alone.
//
// What it is made of lies in the graph's own memory, as much as the largest plan so far has taken. Audio
// thread, but for the constructor and the destructor.
class CAudioStepPlan
{
public:
    explicit CAudioStepPlan(CKernelContext& kernels);
    ~CAudioStepPlan() { release(); }
    CAudioStepPlan(const CAudioStepPlan&) = delete;
    CAudioStepPlan& operator=(const CAudioStepPlan&) = delete;

    bool isReady() const { return isReady_; }

    // What has a buffer as long as the step: the inputs, in the order given to the builder, and behind them
    // what the plan makes for others. The ratio is that of its samples to the step's.
    std::size_t signalCount() const { return signalRatios_.size(); }
    int signalRatio(std::size_t signal) const { return signalRatios_[signal]; }
    // The signal that each output carries; several may carry one, and an input may pass by reference.
    std::span<const std::uint8_t> outputs() const { return outputs_; }

    // One step, with a buffer for each signal.
    void run(int count, std::span<const CBufferRef> signals);
    // A module is about to change its state while the plan runs on: where another one stands in for it, or it
    // for others, that comes to an end.
    void wakeTwinsOf(const void* state);
    // True if they are alike again, so that the plan can go on.
    bool reuniteTwins();
    // Brings the states that others have stood in for up to date, and ends the plan.
    void release();

private:
    friend class CAudioPlanBuilder;
    friend class CAudioPlanForm;

    static constexpr std::size_t kMaxCalls = 320;
    static constexpr std::size_t kMaxPatches = 128;
    static constexpr std::size_t kMaxWholes = 32;
    static constexpr std::size_t kMaxTwins = 128;
    static constexpr std::size_t kMaxStandIns = 192;
    static constexpr std::size_t kMaxSignals = 64;
    static constexpr std::size_t kMaxOutputs = 16;
    static constexpr std::uint8_t kNoSignal = 0xFF;
    // For all buffers between calls together.
    static constexpr std::size_t kArenaSamples = 2048;

    // Something to run: a call, or several as one.
    struct Entry
    {
        CKernelFunction single;
        CKernelGroupFunction group; // null: a single one
        std::uint16_t call;         // the first
    };
    // An address that is another one in every piece.
    struct Patch
    {
        std::uint16_t call;
        std::uint8_t operand;
        std::uint8_t signal;
    };
    // A module that is run as a whole, behind all calls.
    struct Whole
    {
        CAudioWholeModule* module;
        int ratio;
        std::size_t channelCount;
        CInlineArray<std::uint8_t, kMaxKernelOperands> signals;
    };
    // Equal states with equal inputs: one runs for both.
    struct Twin
    {
        const std::byte* running;
        std::byte* resting;
        std::uint32_t bytes;
        std::uint16_t runningBuffer; // as the builder counts them
        std::uint16_t restingBuffer;
        bool isAwake = false;

        void wake();
    };
    // A call that is left out, and the one that runs in its place, as the builder counts them.
    struct StandIn
    {
        std::uint16_t leftOut;
        std::uint16_t running;
    };

    void clear();
    // Before anything is added to an empty plan: for so many of each.
    void makeRoom(std::size_t calls, std::size_t callsLeftOut, std::size_t wholes, std::size_t twins);
    void setPiece(int count);
    void runPiece(int done, int count, std::span<const CBufferRef> signals);
    void runWhole(const Whole& whole, int count, std::span<const CBufferRef> signals);

    CKernelContext& kernels_;
    CAudioVector<double> arena_;
    CAudioVector<CKernelCall> calls_;
    CAudioVector<std::uint16_t> ratios_;  // of a call's count to the step's
    CAudioVector<std::uint16_t> origins_; // of a call, among those written down
    CAudioVector<Entry> entries_;
    CAudioVector<Patch> patches_;
    CAudioVector<Whole> wholes_;
    CAudioVector<Twin> twins_;
    CAudioVector<StandIn> standIns_;
    CInlineArray<std::uint16_t, kMaxSignals> signalRatios_;
    CInlineArray<std::uint8_t, kMaxOutputs> outputs_;
    int longestPiece_ = 0;
    int piece_ = 0; // that the counts are set to
    bool isReady_ = false;
    std::uint64_t form_ = 0; // of the step that it was made of; 0: nothing that could come again
    int takeOvers_ = 0;      // by other steps of that form
};

} // namespace qel
