// The end of the graph: streams become the host's samples.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// The host's output channels of one slice.
struct CAudioHostOutputs
{
    void* const* channels = nullptr; // float or double samples
    int channelCount = 0;
    bool isDouble = false;
    std::size_t offset = 0; // of the slice within the block, in samples
    int count = 0;          // length of the slice

    // Null for a channel that the host does not want.
    void* channel(int number) const { return channels ? channels[number] : nullptr; }
};

// Writes each host channel from the stream of the same number, unless its pointer is null; a channel without
// a stream, and what a stream does not deliver, becomes silence. Unlike other processes it is not driven by
// its inputs alone: write() asks for one slice.
class CModOutput : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;

    void write(const CAudioHostOutputs& outputs);

protected:
    void step(int count) override;

private:
    void fillWithSilence(int channel, int written);

    CAudioHostOutputs outputs_;
    int written_ = 0;
};

using CModOutputDef = CAudioModuleDef<CModOutput>;
extern template class CAudioModuleDef<CModOutput>;

} // namespace qel
