// The fade of a link that joins a sum or leaves it.
#pragma once

#include "CAudioMemory.h"
#include "CBufferRef.h"

#include <array>

namespace qel {

class CKernelContext;

// Length of the fades that stand in for cuts, in samples at a rate: 5 ms. Long enough that what it puts above
// 8 kHz lies 80 dB below a low tone, and short enough to be heard as the switch itself.
int cutFadeSamples(double sampleRateHz);

// A raised-cosine fade of each channel of a link, counted from the first sample that comes: in, from silence
// to the signal, or out. Afterwards it passes the signal, or gives silence, until it is stopped. Audio
// thread; only while it runs it has states, and one small buffer a channel.
class CAudioLinkFade
{
public:
    explicit CAudioLinkFade(CKernelContext& kernels) : kernels_(kernels) {}
    ~CAudioLinkFade() { stop(); }
    CAudioLinkFade(const CAudioLinkFade&) = delete;
    CAudioLinkFade& operator=(const CAudioLinkFade&) = delete;

    void start(bool isIn);
    void stop();
    bool isRunning() const { return states_ != nullptr; }

    // Takes over one reference on `samples` and gives one on what is to be heard in their place.
    CBufferRef apply(int channel, CBufferRef samples, int count, double sampleRateHz);

private:
    static constexpr std::size_t kChannels = 16;

    struct State
    {
        CBufferRef oscillator; // none until the channel's first sample
        int samplesLeft = 0;
    };

    CKernelContext& kernels_;
    CAudioPtr<std::array<State, kChannels>> states_; // null while it does not run, and without memory
    bool isIn_ = false;
};

} // namespace qel
