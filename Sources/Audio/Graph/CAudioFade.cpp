// The crossfade from a module instance to its successor.
#include "CAudioFade.h"

#include <utility>

namespace qel {

namespace {

constexpr std::size_t kStateBytes = 3 * sizeof(double);

} // namespace

CAudioFade& CAudioFade::operator=(CAudioFade&& other) noexcept
{
    if (this != &other) {
        stop();
        kernels_ = other.kernels_;
        states_ = std::move(other.states_);
        samplesLeft_ = std::exchange(other.samplesLeft_, 0);
    }
    return *this;
}

void CAudioFade::start(CKernelContext& kernels, int samples, int channelCount)
{
    stop();
    kernels_ = &kernels;
    samplesLeft_ = samples;
    for (int channel = 0; channel < channelCount; ++channel) {
        const CBufferRef state = states_.push(kernels.allocate(kStateBytes));
        kernels.submit(EKernel::kXfadeI, static_cast<std::uint32_t>(samples), 0.0, {state});
    }
}

void CAudioFade::mix(CAudioModuleStep& from, CAudioModuleStep& to)
{
    for (std::size_t channel = 0; channel < states_.size(); ++channel) {
        const CBufferRef mixed = from.allocate();
        kernels_->submit(EKernel::kXfade, static_cast<std::uint32_t>(from.count), 0.0,
                         {mixed, states_[channel], to.outputs[channel], from.outputs[channel]});
        kernels_->release(from.outputs[channel]);
        kernels_->release(to.outputs[channel]);
        from.outputs[channel] = mixed;
        to.outputs[channel] = {};
    }
    samplesLeft_ -= from.count;
}

void CAudioFade::stop()
{
    for (const CBufferRef state : states_) {
        kernels_->release(state);
    }
    states_.clear();
    samplesLeft_ = 0;
}

} // namespace qel
