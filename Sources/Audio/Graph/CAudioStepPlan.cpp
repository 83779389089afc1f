// A step of a graph as a list of kernel calls, to be run again without the graph.
#include "CAudioStepPlan.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qel {

namespace {

// Room for so many, in steps that leave no pieces behind which nobody can use: every plan of a usual stereo
// stream fits into the first.
constexpr std::size_t kCallsTogether = 128;
constexpr std::size_t kOthersTogether = 48;

template <class Item>
void makeRoomFor(CAudioVector<Item>& items, std::size_t count, std::size_t together = kOthersTogether)
{
    if (items.capacity() < count) {
        items = CAudioVector<Item>(items.get_allocator()); // two at once need not be
        items.reserve((count + together - 1) / together * together);
    }
}

template <class Item>
CAudioVector<Item> vectorIn(CKernelContext& kernels)
{
    return CAudioVector<Item>(CAudioAllocator<Item>(kernels.memory()));
}

} // namespace

CAudioStepPlan::CAudioStepPlan(CKernelContext& kernels)
    : kernels_(kernels), arena_(vectorIn<double>(kernels)), calls_(vectorIn<CKernelCall>(kernels)),
      ratios_(vectorIn<std::uint16_t>(kernels)), origins_(vectorIn<std::uint16_t>(kernels)),
      entries_(vectorIn<Entry>(kernels)), patches_(vectorIn<Patch>(kernels)),
      wholes_(vectorIn<Whole>(kernels)), twins_(vectorIn<Twin>(kernels)),
      standIns_(vectorIn<StandIn>(kernels))
{}

void CAudioStepPlan::makeRoom(std::size_t calls, std::size_t callsLeftOut, std::size_t wholes,
                              std::size_t twins)
{
    arena_.resize(kArenaSamples);
    makeRoomFor(calls_, calls, kCallsTogether);
    makeRoomFor(ratios_, calls, kCallsTogether);
    makeRoomFor(origins_, calls, kCallsTogether);
    makeRoomFor(entries_, calls, kCallsTogether);
    makeRoomFor(patches_, kMaxPatches);
    makeRoomFor(wholes_, wholes, 1);
    makeRoomFor(twins_, twins);
    makeRoomFor(standIns_, callsLeftOut);
}

void CAudioStepPlan::Twin::wake()
{
    if (!std::exchange(isAwake, true)) {
        std::memcpy(resting, running, bytes);
    }
}

void CAudioStepPlan::wakeTwinsOf(const void* state)
{
    for (Twin& twin : twins_) {
        if (twin.running == state || twin.resting == state) {
            twin.wake();
        }
    }
}

bool CAudioStepPlan::reuniteTwins()
{
    const bool haveParted = std::any_of(twins_.begin(), twins_.end(), [](const Twin& twin) {
        return twin.isAwake && std::memcmp(twin.resting, twin.running, twin.bytes) != 0;
    });
    for (Twin& twin : twins_) {
        twin.isAwake = twin.isAwake && haveParted;
    }
    return !haveParted;
}

void CAudioStepPlan::release()
{
    if (!std::exchange(isReady_, false)) {
        return;
    }
    for (Twin& twin : twins_) {
        twin.wake();
    }
}

void CAudioStepPlan::clear()
{
    calls_.clear();
    ratios_.clear();
    origins_.clear();
    entries_.clear();
    patches_.clear();
    wholes_.clear();
    twins_.clear();
    standIns_.clear();
    signalRatios_.clear();
    outputs_.clear();
    piece_ = 0;
    form_ = 0;
    takeOvers_ = 0;
    isReady_ = false;
}

// Whole modules come behind all pieces: what they tell is then in the order that they would tell it in.
void CAudioStepPlan::run(int count, std::span<const CBufferRef> signals)
{
    // As long as each other, so that the calls' counts stay as they are.
    const int pieces = (count + longestPiece_ - 1) / longestPiece_;
    const int longest = (count + pieces - 1) / pieces;
    for (int done = 0; done < count; done += longest) {
        runPiece(done, std::min(count - done, longest), signals);
    }
    for (const Whole& whole : wholes_) {
        runWhole(whole, count, signals);
    }
}

void CAudioStepPlan::setPiece(int count)
{
    piece_ = count;
    for (std::size_t i = 0; i < calls_.size(); ++i) {
        calls_[i].count = ratios_[i] * static_cast<std::uint32_t>(count);
    }
}

void CAudioStepPlan::runPiece(int done, int count, std::span<const CBufferRef> signals)
{
    if (count != piece_) {
        setPiece(count);
    }
    for (const Patch& patch : patches_) {
        double* const samples = kernels_.samples(signals[patch.signal]);
        calls_[patch.call].data[patch.operand] = samples + done * signalRatios_[patch.signal];
    }
    for (const Entry& entry : entries_) {
        if (entry.group) {
            entry.group(&calls_[entry.call]);
        } else {
            entry.single(calls_[entry.call]);
        }
    }
}

void CAudioStepPlan::runWhole(const Whole& whole, int count, std::span<const CBufferRef> signals)
{
    CAudioModuleStep step(kernels_, whole.ratio * count, whole.channelCount);
    for (const std::uint8_t signal : whole.signals) {
        step.inputs.push(signals[signal]);
    }
    whole.module->process(step);
}

} // namespace qel
