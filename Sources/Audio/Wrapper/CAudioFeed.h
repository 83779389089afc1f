// The way of samples from outside into a graph.
#pragma once

#include "CAudioLink.h"

namespace qel {

class CAudioProcessBase;

// Feeds one input port of a process. Ends before the process and the graph do. Audio thread.
class CAudioFeed
{
public:
    CAudioFeed(CAudioGraph& graph, CAudioProcessBase& process, int inputPort);
    ~CAudioFeed();
    CAudioFeed(const CAudioFeed&) = delete;
    CAudioFeed& operator=(const CAudioFeed&) = delete;

    // The channels 0 to `count` - 1 carry a stream from here on.
    void setChannelCount(int count) { port_.setChannels((CChannelMask{1} << count) - 1); }
    // Queues samples of one channel and gives the memory to fill before the process runs; null if the pool of
    // buffers is exhausted.
    double* append(int channel, int count, const CAudioStreamFormat& format);

private:
    CAudioGraph& graph_;
    CAudioInputPort& target_;
    CAudioOutputPort port_;
    CAudioLink link_;
};

} // namespace qel
