// Links the levels of a group's channels.
#include "CModLeveler.h"

#include "CAudioSum.h"

#include <array>
#include <cmath>
#include <limits>
#include <span>

namespace qel {

namespace {

enum : int
{
    kModeSlot,
    kMixSlot,
    kLinkingSlot
};

constexpr std::size_t kMostAtOnce = 4;
// By the number of channels, from two on.
constexpr EKernel kLargest[] = {EKernel::kMax2, EKernel::kMax3, EKernel::kMax4};
constexpr EKernel kSmallest[] = {EKernel::kMin2, EKernel::kMin3, EKernel::kMin4};

// Values come from percentages, so an end of the range may be missed by a rounding.
bool isAt(double value, double end)
{
    return std::fabs(value - end) <= std::numeric_limits<double>::epsilon();
}

} // namespace

CModLevelerModule::Settings CModLevelerModule::readSettings(const CAudioProcessSlots& slots,
                                                            const CAudioModulePlace& place)
{
    return {slots.value(kModeSlot, place.group) != 0.0, slots.value(kMixSlot, place.group),
            slots.value(kLinkingSlot, place.group)};
}

void CModLevelerModule::configure(const Settings& settings, const CAudioModulePlace&)
{
    takesSmallest_ = settings.takesSmallest;
    mix_ = settings.mix;
    freedom_ = 1.0 - settings.linking;
}

void CModLevelerModule::process(CAudioModuleStep& step)
{
    const int channels = static_cast<int>(step.channelCount);
    if (isAt(freedom_, 1.0)) {
        for (int channel = 0; channel < channels; ++channel) {
            step.passThrough(channel);
        }
        return;
    }
    const CBufferRef merged = level(step);
    for (int channel = 0; channel < channels; ++channel) {
        if (isAt(freedom_, 0.0)) {
            step.kernels.addRef(merged);
            step.setOutput(merged, channel);
        } else {
            const CBufferRef output = step.allocate();
            step.submit(EKernel::kMix, freedom_, {output, step.input(0, channel), merged});
            step.setOutput(output, channel);
        }
    }
    step.kernels.release(merged);
}

CBufferRef CModLevelerModule::level(CAudioModuleStep& step) const
{
    if (isAt(mix_, 1.0)) {
        return mean(step);
    }
    const CBufferRef selected = extreme(step);
    if (isAt(mix_, 0.0)) {
        return selected;
    }
    const CBufferRef average = mean(step);
    const CBufferRef output = step.allocate();
    step.submit(EKernel::kMix, mix_, {output, average, selected});
    step.kernels.release(average);
    step.kernels.release(selected);
    return output;
}

// Four channels at a time; every four collapse into one.
CBufferRef CModLevelerModule::extreme(CAudioModuleStep& step) const
{
    std::array<CBufferRef, kMostAtOnce + 1> operands; // the output, then what is held
    std::size_t held = 0;
    const auto collapse = [&] {
        operands[0] = step.allocate();
        const EKernel kernel = (takesSmallest_ ? kSmallest : kLargest)[held - 2];
        step.kernels.submit(step.kernels.kernel(kernel), static_cast<std::uint32_t>(step.count), 0.0,
                            std::span(operands).first(held + 1));
        for (std::size_t i = 1; i <= held; ++i) {
            step.kernels.release(operands[i]);
        }
        operands[1] = operands[0];
        held = 1;
    };
    for (std::size_t channel = 0; channel < step.channelCount; ++channel) {
        const CBufferRef input = step.input(0, static_cast<int>(channel));
        step.kernels.addRef(input);
        operands[++held] = input;
        if (held == kMostAtOnce) {
            collapse();
        }
    }
    if (held > 1) {
        collapse();
    }
    return operands[1];
}

CBufferRef CModLevelerModule::mean(CAudioModuleStep& step) const
{
    CAudioSum sum(step.kernels, step.count);
    for (std::size_t channel = 0; channel < step.channelCount; ++channel) {
        const CBufferRef input = step.input(0, static_cast<int>(channel));
        step.kernels.addRef(input);
        sum.add(input);
    }
    return sum.takeMean();
}

template class CAudioModuleDef<CModLeveler>;

} // namespace qel
