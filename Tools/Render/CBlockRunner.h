// Blocks of samples through a guest.
#pragma once

#include "Render/AudioFile.h"
#include "Render/CGuestPlugin.h"

#include <vector>

namespace qel::tools {

// Converts to the guest's sample type and spreads a file's channels over the guest's: what it has more is fed
// with silence and dropped behind it.
class CBlockRunner
{
public:
    explicit CBlockRunner(CGuestPlugin& guest) : guest_(guest) {}

    // The first `frames` samples of `input` through the guest into `output`; channels of `output` that the
    // guest does not have become silent.
    void run(const CSignal& input, CSignal& output, int frames, std::int64_t position);

    // Spent in the guest.
    double processSec() const { return processSec_; }

private:
    template <class Sample>
    struct CBuffers
    {
        std::vector<std::vector<Sample>> inputs;
        std::vector<std::vector<Sample>> outputs;
        std::vector<Sample*> inputPointers;
        std::vector<Sample*> outputPointers;
    };
    template <class Sample>
    void runAs(CBuffers<Sample>& buffers, const CSignal& input, CSignal& output, int frames,
               std::int64_t position);

    CGuestPlugin& guest_;
    CBuffers<float> single_;
    CBuffers<double> double_;
    double processSec_ = 0.0;
};

} // namespace qel::tools
