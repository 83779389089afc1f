// Halves the sample rate.
#include "CModDecimator.h"

#include "CKernelContext.h"

namespace qel {

void CModDecimator::resolveKernels()
{
    takeFirst_ = graph().kernels.findShortName("decim2");
    takeSecond_ = graph().kernels.findShortName("decim2s");
}

void CModDecimator::syncLinks()
{
    if (channels().isEmpty()) {
        phase_ = 0; // the next stream starts afresh
    }
    formats_.clear();
    for (const Channel& channel : channels()) {
        CAudioStreamFormat format = *channel.format;
        format.sampleRateHz *= 0.5;
        format.latencySamples *= 0.5;
        formats_.push(graph().formats.intern(format));
    }
    output(0).setChannels(input(0).channels());
}

void CModDecimator::reset(double positionSec)
{
    CAudioProcessBase::reset(positionSec);
    phase_ = 0;
}

void CModDecimator::step(int count)
{
    CKernelContext& kernels = graph().kernels;
    const int made = (count - phase_ + 1) >> 1;
    const int kernel = phase_ == 0 ? takeFirst_ : takeSecond_;
    phase_ = (phase_ + count) & 1;
    if (made == 0) {
        return;
    }
    for (std::size_t i = 0; i < channels().size(); ++i) {
        const int channel = channels()[i].number;
        const CBufferRef from = input(0).gather(channel, count, def().isWeightedInput());
        const CBufferRef to = kernels.allocateSamples(static_cast<std::size_t>(made));
        kernels.submit(kernel, static_cast<std::uint32_t>(made), 0.0, {to, from});
        kernels.release(from);
        output(0).emit(channel, to, made, formats_[i]);
    }
}

template class CAudioModuleDef<CModDecimator>;

} // namespace qel
