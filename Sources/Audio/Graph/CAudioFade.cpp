// The crossfade from a module instance to its successor.
#include "CAudioFade.h"

#include <utility>

namespace qel {

namespace {

constexpr std::size_t kStateBytes = 3 * sizeof(double);

} // namespace

CAudioFade::Kernels CAudioFade::findKernels(const CKernelContext& kernels)
{
    return {kernels.findShortName("xfadep"), kernels.findShortName("xfadeby")};
}

CAudioFade& CAudioFade::operator=(CAudioFade&& other) noexcept
{
    if (this != &other) {
        stop();
        kernels_ = other.kernels_;
        ids_ = other.ids_;
        oscillator_ = std::exchange(other.oscillator_, {});
        samplesLeft_ = std::exchange(other.samplesLeft_, 0);
    }
    return *this;
}

void CAudioFade::start(CKernelContext& kernels, const Kernels& ids, int samples)
{
    stop();
    kernels_ = &kernels;
    ids_ = ids;
    samplesLeft_ = samples;
    oscillator_ = kernels.allocate(kStateBytes);
    kernels.submit(EKernel::kXfadeI, static_cast<std::uint32_t>(samples), 0.0, {oscillator_});
}

void CAudioFade::mix(CAudioModuleStep& from, CAudioModuleStep& to)
{
    const CBufferRef places = from.allocate();
    from.submit(ids_.places, 0.0, {places, oscillator_});
    for (std::size_t channel = 0; channel < from.channelCount; ++channel) {
        const CBufferRef mixed = from.allocate();
        from.submit(ids_.mix, 0.0, {mixed, places, to.outputs[channel], from.outputs[channel]});
        kernels_->release(from.outputs[channel]);
        kernels_->release(to.outputs[channel]);
        from.outputs[channel] = mixed;
        to.outputs[channel] = {};
    }
    kernels_->release(places);
    samplesLeft_ -= from.count;
}

void CAudioFade::stop()
{
    if (!oscillator_.isNone()) {
        kernels_->release(std::exchange(oscillator_, {}));
    }
    samplesLeft_ = 0;
}

} // namespace qel
