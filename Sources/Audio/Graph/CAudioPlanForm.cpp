// Whether a step that was written down is like the one that a plan was made of.
#include "CAudioPlanForm.h"

#include <algorithm>
#include <bit>

namespace qel {

using namespace plan;

namespace {

class CSum
{
public:
    void add(std::uint64_t word)
    {
        sum_ = (sum_ ^ word) * 0x9E3779B97F4A7C15U;
        sum_ ^= sum_ >> 32;
    }
    std::uint64_t get() const { return sum_; }

private:
    std::uint64_t sum_ = 0;
};

} // namespace

// Buffers are counted as they first appear, so their numbers say how the calls hang together.
std::uint64_t CAudioPlanForm::sum(std::size_t inputs, std::span<const Index> outputs,
                                  std::size_t longestRatio) const
{
    CSum sum;
    sum.add(inputs << 32 | longestRatio);
    for (const Call& call : calls_) {
        const auto operands = std::bit_cast<std::array<std::uint64_t, 2>>(call.buffers);
        sum.add(call.entry ? reinterpret_cast<std::uintptr_t>(call.entry)
                           : reinterpret_cast<std::uintptr_t>(call.module));
        sum.add(call.channelCount << 40 | std::uint64_t{call.operandCount} << 32 | call.ratio);
        sum.add(operands[0]);
        sum.add(operands[1]);
    }
    for (const Buffer& buffer : buffers_) {
        const auto kind = static_cast<std::size_t>(buffer.kind);
        sum.add(buffer.kind == EKind::kState ? pool_.bytes(buffer.ref) << 8 | kind : kind);
    }
    for (const Index output : outputs) {
        sum.add(output);
    }
    return sum.get() | 1;
}

bool CAudioPlanForm::takeOver(CAudioStepPlan& plan, std::uint64_t sum) const
{
    const bool isAlike = plan.form_ == sum && plan.takeOvers_ < kMostTakeOvers &&
                         std::all_of(plan.standIns_.begin(), plan.standIns_.end(), [&](const auto& pair) {
                             return standsIn(calls_[pair.leftOut], calls_[pair.running]);
                         });
    if (!isAlike) {
        return false;
    }
    for (std::size_t i = 0; i < plan.calls_.size(); ++i) {
        const Call& call = calls_[plan.origins_[i]];
        plan.calls_[i].scalar = call.scalar;
        for (std::size_t j = 0; j < call.operandCount; ++j) {
            const Buffer& buffer = buffers_[call.buffers[j]];
            if (buffer.kind == EKind::kState) {
                plan.calls_[i].data[j] = pool_.address(buffer.ref);
            }
        }
    }
    for (CAudioStepPlan::Twin& twin : plan.twins_) {
        twin.running = pool_.address(buffers_[twin.runningBuffer].ref);
        twin.resting = pool_.address(buffers_[twin.restingBuffer].ref);
        twin.isAwake = false;
    }
    ++plan.takeOvers_;
    plan.isReady_ = true;
    return true;
}

// What the form says of both has been seen when the plan was made.
bool CAudioPlanForm::standsIn(const Call& call, const Call& other) const
{
    bool isSame = std::bit_cast<std::uint64_t>(call.scalar) == std::bit_cast<std::uint64_t>(other.scalar);
    for (std::size_t i = 0; i < call.operandCount && isSame; ++i) {
        const Buffer& a = buffers_[call.buffers[i]];
        const Buffer& b = buffers_[other.buffers[i]];
        isSame = a.kind != EKind::kState || b.kind != EKind::kState || haveSameBits(pool_, a.ref, b.ref);
    }
    return isSame;
}

} // namespace qel
