// A host's blocks as streams of the graph.
#pragma once

#include "CAudioFeed.h"
#include "CAudioHostBlock.h"

#include <cstdint>
#include <optional>

namespace qel {

class CModOutput;

// Connects the main process to the output process and feeds it: cuts a block into slices as long as that
// takes, widens the host's samples, and has the output process write the host's channels. What is not finite
// or louder than any signal becomes silence. Ends before the processes do. Audio thread, but for the
// constructor and the destructor.
class CAudioHostStream
{
public:
    CAudioHostStream(CAudioGraph& graph, CAudioProcessBase& main, CModOutput& output, bool hasSidechain);
    ~CAudioHostStream();
    CAudioHostStream(const CAudioHostStream&) = delete;
    CAudioHostStream& operator=(const CAudioHostStream&) = delete;

    // Runs one block, whose first sample stands at `positionSec`.
    void process(const CAudioHostSetup& setup, const CAudioHostBlock& block, double positionSec);
    // Forgets the signal.
    void reset(double positionSec);
    // By how much the last sample written was late.
    std::int32_t latencySamples() const;

private:
    void feed(CAudioFeed& target, const CAudioHostSetup& setup, const CAudioHostBlock& block,
              int firstChannel, int channelCount, int start, int count);

    CAudioGraph& graph_;
    CAudioProcessBase& main_;
    CModOutput& output_;
    CAudioFeed mainFeed_;
    std::optional<CAudioFeed> sidechainFeed_;
    CAudioLink outputLink_;
};

} // namespace qel
