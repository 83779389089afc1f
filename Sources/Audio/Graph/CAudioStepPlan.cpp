// A step of a graph as a list of kernel calls, to be run again without the graph.
#include "CAudioStepPlan.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qel {

namespace {

// Room for so many, in memory that the system has really given: the audio thread would have to wait for it.
template <class Item>
void reserveTouched(std::vector<Item>& items, std::size_t count)
{
    items.resize(count);
    items.clear();
}

} // namespace

CAudioStepPlan::CAudioStepPlan(CKernelContext& kernels)
    : kernels_(kernels), memory_(kArenaSamples + kAlignment / sizeof(double))
{
    reserveTouched(calls_, kMaxCalls);
    reserveTouched(ratios_, kMaxCalls);
    reserveTouched(origins_, kMaxCalls);
    reserveTouched(entries_, kMaxCalls);
    reserveTouched(patches_, kMaxPatches);
    reserveTouched(wholes_, kMaxWholes);
    reserveTouched(twins_, kMaxTwins);
    reserveTouched(standIns_, kMaxStandIns);
    reserveTouched(signalRatios_, kMaxSignals);
    reserveTouched(outputs_, kMaxOutputs);
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

double* CAudioStepPlan::arena()
{
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(memory_.data()) % kAlignment;
    return memory_.data() + (beyond == 0 ? 0 : (kAlignment - beyond) / sizeof(double));
}

// Whole modules come behind all pieces: what they tell is then in the order that they would tell it in.
void CAudioStepPlan::run(int count, std::span<const CBufferRef> signals)
{
    for (int done = 0; done < count;) {
        const int piece = std::min(count - done, longestPiece_);
        runPiece(done, piece, signals);
        done += piece;
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
