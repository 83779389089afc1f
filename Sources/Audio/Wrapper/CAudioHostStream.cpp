// A host's blocks as streams of the graph.
#include "CAudioHostStream.h"

#include "CModOutput.h"
#include "HostSamples.h"

#include <algorithm>
#include <cmath>

namespace qel {

CAudioHostStream::CAudioHostStream(CAudioGraph& graph, CAudioProcessBase& main, CModOutput& output,
                                   bool hasSidechain)
    : graph_(graph), main_(main), output_(output), mainFeed_(graph, main, 0),
      outputLink_(graph, main.output(0))
{
    if (hasSidechain) {
        sidechainFeed_.emplace(graph, main, 1);
    }
    outputLink_.connect();
    output_.input(0).addLink(outputLink_);
}

CAudioHostStream::~CAudioHostStream()
{
    output_.input(0).clearLinks();
    outputLink_.disconnect();
}

void CAudioHostStream::process(const CAudioHostSetup& setup, const CAudioHostBlock& block, double positionSec)
{
    const int mainCount = setup.inputCount - setup.sidechainCount;
    int count = 0;
    for (int start = 0; start < block.count; start += count) {
        count = std::min(main_.longestStep(), block.count - start);
        graph_.positionSec = positionSec + start / setup.sampleRateHz;
        feed(mainFeed_, setup, block, 0, mainCount, start, count);
        if (sidechainFeed_) {
            feed(*sidechainFeed_, setup, block, mainCount, setup.sidechainCount, start, count);
        }
        main_.process();
        CAudioHostOutputs outputs;
        outputs.channels = block.outputs;
        outputs.channelCount = setup.outputCount;
        outputs.isDouble = block.isDouble;
        outputs.offset = static_cast<std::size_t>(start);
        outputs.count = count;
        output_.write(outputs);
    }
}

void CAudioHostStream::feed(CAudioFeed& target, const CAudioHostSetup& setup, const CAudioHostBlock& block,
                            int firstChannel, int channelCount, int start, int count)
{
    const CAudioStreamFormat format{setup.sampleRateHz, 0.0, 0};
    target.setChannelCount(channelCount);
    for (int channel = 0; channel < channelCount; ++channel) {
        double* const samples = target.append(channel, count, format);
        const void* const from = block.inputs ? block.inputs[firstChannel + channel] : nullptr;
        if (!samples) {
            continue;
        }
        if (!from) {
            std::fill_n(samples, count, 0.0);
        } else if (block.isDouble) {
            takeHostSamples(static_cast<const double*>(from) + start, samples,
                            static_cast<std::size_t>(count));
        } else {
            takeHostSamples(static_cast<const float*>(from) + start, samples,
                            static_cast<std::size_t>(count));
        }
    }
}

void CAudioHostStream::reset(double positionSec)
{
    main_.reset(positionSec);
    output_.reset(positionSec);
}

std::int32_t CAudioHostStream::latencySamples() const
{
    return static_cast<std::int32_t>(std::lround(output_.format().latencySamples));
}

} // namespace qel
