// The end of the graph: streams become the host's samples.
#include "CModOutput.h"

#include "CKernelContext.h"
#include "HostSamples.h"

#include <algorithm>

namespace qel {

void CModOutput::write(const CAudioHostOutputs& outputs)
{
    outputs_ = outputs;
    written_ = 0;
    process();
    for (int channel = 0; channel < outputs_.channelCount; ++channel) {
        const bool hasStream = channel < kMaxChannels && (input(0).channels() >> channel & 1) != 0;
        fillWithSilence(channel, hasStream ? written_ : 0);
    }
}

void CModOutput::step(int count)
{
    const int wanted = std::min(count, outputs_.count - written_);
    for (const Channel& channel : channels()) {
        if (channel.number >= outputs_.channelCount || wanted <= 0) {
            continue;
        }
        const CBufferRef samples = input(0).gather(channel.number, count, false);
        const std::size_t offset = outputs_.offset + static_cast<std::size_t>(written_);
        void* const target = outputs_.channel(channel.number);
        const double* from = graph().kernels.samples(samples); // null if the pool is exhausted
        if (!target || !from) {
            // The stream moves on all the same.
        } else if (outputs_.isDouble) {
            giveHostSamples(from, static_cast<double*>(target) + offset, static_cast<std::size_t>(wanted));
        } else {
            giveHostSamples(from, static_cast<float*>(target) + offset, static_cast<std::size_t>(wanted));
        }
        graph().kernels.release(samples);
    }
    written_ += count;
}

void CModOutput::fillWithSilence(int channel, int written)
{
    const auto start = static_cast<std::size_t>(std::clamp(written, 0, outputs_.count));
    const std::size_t count = static_cast<std::size_t>(outputs_.count) - start;
    void* const target = outputs_.channel(channel);
    if (!target) {
        return;
    }
    if (outputs_.isDouble) {
        std::fill_n(static_cast<double*>(target) + outputs_.offset + start, count, 0.0);
    } else {
        std::fill_n(static_cast<float*>(target) + outputs_.offset + start, count, 0.0f);
    }
}

template class CAudioModuleDef<CModOutput>;

} // namespace qel
