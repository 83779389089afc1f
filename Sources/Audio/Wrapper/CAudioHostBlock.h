// What a host hands over for processing.
#pragma once

#include <cstdint>

namespace qel {

// What holds between resume() and suspend().
struct CAudioHostSetup
{
    double sampleRateHz = 44100.0;
    int blockSize = 0;  // announced; a block may be longer all the same
    int inputCount = 0; // the side-chain's channels are the last of them
    int sidechainCount = 0;
    int outputCount = 0;
};

// One block: channel pointers to float or double samples. An input that is null is silence, an output that is
// null is not written, and either array may be null as a whole; input and output may be the same memory.
struct CAudioHostBlock
{
    const void* const* inputs = nullptr;
    void* const* outputs = nullptr;
    int count = 0;
    bool isDouble = false;
};

} // namespace qel
