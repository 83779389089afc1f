// The fade of a link that joins a sum or leaves it.
#include "CAudioLinkFade.h"

#include "CKernelContext.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr double kCutFadeSec = 0.005;
constexpr std::size_t kLinkStateBytes = 3 * sizeof(double);

} // namespace

int cutFadeSamples(double sampleRateHz)
{
    return std::max(1, static_cast<int>(std::round(kCutFadeSec * sampleRateHz)));
}

void CAudioLinkFade::start(bool isIn)
{
    stop();
    states_ = makeAudio<std::array<State, kChannels>>(kernels_.memory());
    isIn_ = isIn;
}

void CAudioLinkFade::stop()
{
    if (!states_) {
        return;
    }
    for (const State& state : *states_) {
        if (!state.oscillator.isNone()) {
            kernels_.release(state.oscillator);
        }
    }
    states_.reset();
}

CBufferRef CAudioLinkFade::apply(int channel, CBufferRef samples, int count, double sampleRateHz)
{
    State& state = (*states_)[static_cast<std::size_t>(channel)];
    if (state.oscillator.isNone()) {
        state = {kernels_.allocate(kLinkStateBytes), cutFadeSamples(sampleRateHz)};
        kernels_.submit(EKernel::kXfadeI, static_cast<std::uint32_t>(state.samplesLeft), 0.0,
                        {state.oscillator});
    }
    const int fading = std::min(count, state.samplesLeft);
    if (fading == 0 && isIn_) {
        return samples;
    }
    const auto length = static_cast<std::uint32_t>(count);
    const CBufferRef silence = kernels_.allocateSamples(length);
    kernels_.submit(EKernel::kFill0, length, 0.0, {silence});
    if (fading == 0) {
        kernels_.release(samples);
        return silence;
    }
    const CBufferRef from = isIn_ ? silence : samples;
    const CBufferRef to = isIn_ ? samples : silence;
    const CBufferRef faded = kernels_.allocateSamples(length);
    kernels_.submit(EKernel::kXfade, static_cast<std::uint32_t>(fading), 0.0,
                    {faded, state.oscillator, to, from});
    if (fading < count) {
        kernels_.submit(EKernel::kCopy, static_cast<std::uint32_t>(count - fading), 0.0,
                        {faded.advancedBy(fading), to.advancedBy(fading)});
    }
    state.samplesLeft -= fading;
    kernels_.release(silence);
    kernels_.release(samples);
    return faded;
}

} // namespace qel
