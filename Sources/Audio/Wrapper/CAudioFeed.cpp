// The way of samples from outside into a graph.
#include "CAudioFeed.h"

#include "CAudioProcessBase.h"

namespace qel {

CAudioFeed::CAudioFeed(CAudioGraph& graph, CAudioProcessBase& process, int inputPort)
    : graph_(graph), target_(process.input(inputPort)), port_(graph), link_(graph, port_)
{
    link_.connect();
    target_.addLink(link_);
}

CAudioFeed::~CAudioFeed()
{
    target_.clearLinks();
    link_.disconnect();
}

double* CAudioFeed::append(int channel, int count, const CAudioStreamFormat& format)
{
    const CBufferRef buffer = graph_.kernels.allocateSamples(static_cast<std::size_t>(count));
    double* const samples = graph_.kernels.samples(buffer);
    port_.emit(channel, buffer, count, graph_.formats.intern(format));
    return samples;
}

} // namespace qel
