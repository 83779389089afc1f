// All channels become their mean.
#include "CModMono.h"

#include "CAudioSum.h"

namespace qel {

void CModMono::syncLinks()
{
    output(0).setChannels(input(0).channels());
}

void CModMono::step(int count)
{
    CAudioSum sum(graph().kernels, count);
    for (const Channel& channel : channels()) {
        sum.add(input(0).gather(channel.number, count, def().isWeightedInput()));
    }
    const CBufferRef mean = sum.takeMean();
    for (const Channel& channel : channels()) {
        graph().kernels.addRef(mean);
        output(0).emit(channel.number, mean, count, channel.format);
    }
    graph().kernels.release(mean);
}

template class CAudioModuleDef<CModMono>;

} // namespace qel
