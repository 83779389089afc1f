// What a host hands over for processing.
#pragma once

namespace qel {

// What holds from one block on. There is no block size in it: the graph works in slices of its own.
struct CAudioHostSetup
{
    double sampleRateHz = 44100.0;
    int inputCount = 0; // the side-chain's channels are the last of them
    int sidechainCount = 0;
    int outputCount = 0;
};

// One block: channel pointers to float or double samples, as many as the setup has channels. An input that is
// null is silence, an output that is null is not written, and either array may be null as a whole; input and
// output may be the same memory.
struct CAudioHostBlock
{
    const void* const* inputs = nullptr;
    void* const* outputs = nullptr;
    int count = 0;
    bool isDouble = false;
};

} // namespace qel
