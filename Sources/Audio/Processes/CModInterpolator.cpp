// Doubles the sample rate.
#include "CModInterpolator.h"

#include "CKernelContext.h"

namespace qel {

void CModInterpolator::resolveKernels()
{
    kernel_ = graph().kernels.findShortName("interp2");
}

void CModInterpolator::syncLinks()
{
    formats_.clear();
    for (const Channel& channel : channels()) {
        CAudioStreamFormat format = *channel.format;
        format.sampleRateHz *= 2.0;
        format.latencySamples *= 2.0;
        formats_.push(graph().formats.intern(format));
    }
    output(0).setChannels(input(0).channels());
}

void CModInterpolator::step(int count)
{
    CKernelContext& kernels = graph().kernels;
    const int made = 2 * count;
    for (std::size_t i = 0; i < channels().size(); ++i) {
        const int channel = channels()[i].number;
        const CBufferRef from = input(0).gather(channel, count, def().isWeightedInput());
        const CBufferRef to = kernels.allocateSamples(static_cast<std::size_t>(made));
        kernels.submit(kernel_, static_cast<std::uint32_t>(count), 0.0, {to, from});
        kernels.release(from);
        output(0).emit(channel, to, made, formats_[i]);
    }
}

template class CAudioModuleDef<CModInterpolator>;

} // namespace qel
