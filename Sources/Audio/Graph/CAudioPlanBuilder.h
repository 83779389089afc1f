// Writes down what one step of a graph runs, and makes a plan of it.
#pragma once

#include "CAudioGraph.h"
#include "CAudioPlanOrder.h"
#include "CAudioStepPlan.h"

#include <atomic>

namespace qel {

// Watches the kernel calls of one step of a graph that is at rest before and behind it. build() gives every
// content that a buffer ever has a number, its value, and from then on knows what is equal:
//
//   - a call that does what one before it did (the same kernel, values and scalar, states of the same bits)
//     is left out: its output is that of the other, and so is its state while the plan holds;
//   - calls that a kernel can do at once are brought together (CAudioPlanOrder);
//   - a buffer between calls has memory from its first use to its last.
//
// From fade to fade of the same modules, steps have the same form: then the plan before is taken over
// (CAudioPlanForm), and nothing of this has to be found again.
//
// What it does not understand makes no plan: counts that are no multiple of the step's, buffers read in part
// or filled by hand, too many of anything.
//
// It is needed for one step and is large, so all graphs of the process share one, and whoever finds it taken
// tries again at another step. Audio thread, without locks or memory from the heap.
class CAudioPlanBuilder final : public CKernelObserver
{
public:
    // Null while another thread has it.
    static CAudioPlanBuilder* acquire();
    void giveBack();
    // Any thread: has the system give it memory, for which the audio thread would have to wait.
    static void warmUp();

    // Around the step: what goes in, one buffer a signal, and what has come out.
    void begin(CKernelContext& kernels, int count, std::span<const CBufferRef> inputs);
    void end(std::span<const CBufferRef> outputs);
    // False if there can be none of what was written down. A plan that will not last may go on from the one
    // before it.
    bool build(CAudioStepPlan& plan, bool isForFade);

    // Runs a whole module, as one entry of what is being written down, if something is.
    static void runWhole(CAudioGraph& graph, CAudioWholeModule& module, CAudioModuleStep& step);

    void beforeCall(const CKernelCall& call) override;

private:
    static constexpr std::size_t kMaxOutputs = CAudioStepPlan::kMaxOutputs;
    static constexpr std::size_t kMaxWanted = 128;
    // Buffers between calls. Few share the memory as if they were more, so that long pieces stay in the
    // nearest cache with their signals.
    static constexpr std::size_t kMaxMemories = 64;
    static constexpr std::size_t kMinMemories = 8;
    static constexpr int kShortestPiece = 8;
    static constexpr std::size_t kBuckets = 512;

    using Index = plan::Index;
    using Buffer = plan::Buffer;
    using Call = plan::Call;

    Call* addCall(std::uint32_t count, std::size_t operandCount);
    void addOperand(Call& call, CBufferRef ref);
    Index bufferOf(CBufferRef ref);
    void classify(std::span<const CBufferRef> outputs);

    bool number(bool joinsTwins);
    bool readOperands(Call& call);
    bool adoptTwin(Call& call);
    bool isTwin(const Call& call, const Call& other) const;
    bool isSameState(const Call& call, const Call& other, std::size_t operand) const;
    std::size_t bucketOf(const Call& call) const;
    bool findSources(Call& call);
    Index holderOf(Index buffer, Index value) const;
    Index newValue(Index buffer);
    bool findOutputs();
    bool findWholeInputs();
    bool findTwins(CAudioStepPlan& plan);

    bool lay(CAudioStepPlan& plan);
    void makeRoom(CAudioStepPlan& plan) const;
    bool nameSignals(CAudioStepPlan& plan);
    bool nameSignal(CAudioStepPlan& plan, Index buffer, std::uint32_t ratio, std::uint8_t& outSignal);
    bool layWhole(CAudioStepPlan& plan, const Call& call);
    template <class Function>
    void forCallsAt(Index place, Function&& function);
    void hideLinks();
    void findLastUses();
    bool layUnits(CAudioStepPlan& plan, Index place);
    void layEntry(CAudioStepPlan& plan, const CAudioPlanOrder::Unit& unit, std::size_t lanes, Index call);
    bool layKernel(CAudioStepPlan& plan, const Call& call);
    void giveMemory(Buffer& buffer);
    void takeMemory(const Call& call, Index place);
    bool carve(CAudioStepPlan& plan);

    static CAudioPlanBuilder instance_;
    static std::atomic<bool> isTaken_;

    CKernelContext* kernels_ = nullptr;
    std::uint32_t count_ = 0;
    std::size_t refusedCalls_ = 0;
    std::size_t longestBuffer_ = 0;
    bool isWriting_ = false;
    bool isGood_ = false;

    std::size_t callCount_ = 0;
    std::size_t bufferCount_ = 0;
    std::size_t valueCount_ = 0;
    std::size_t inputCount_ = 0;
    std::size_t outputCount_ = 0;
    std::size_t wantedCount_ = 0; // values that the plan makes for others
    std::size_t freeCount_ = 0;
    std::size_t memoryCount_ = 0; // buffers between calls
    std::array<Call, plan::kMaxCalls> calls_;
    std::array<Buffer, plan::kMaxBuffers> buffers_;
    std::array<Index, CBufferPool::kSlots> bufferOfSlot_;
    std::array<Index, plan::kMaxValues> holders_; // the buffer that got the value first
    std::array<Index, kBuckets> buckets_;
    std::array<Index, kMaxOutputs> outputs_; // buffers
    std::array<Index, kMaxOutputs> outputSources_;
    std::array<Index, kMaxWanted> wantedValues_;
    std::array<Index, kMaxMemories> free_;
    CAudioPlanOrder order_;
};

} // namespace qel
