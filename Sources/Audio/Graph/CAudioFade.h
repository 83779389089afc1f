// The crossfade from a module instance to its successor.
#pragma once

#include "CAudioModule.h"

namespace qel {

// A raised-cosine fade on every channel of an instance, over a fixed number of samples. start(), mix() step
// by step until samplesLeft() is 0, stop(). Holds one small state buffer a channel while it runs. Audio
// thread.
class CAudioFade
{
public:
    CAudioFade() = default;
    CAudioFade(CAudioFade&& other) noexcept { *this = std::move(other); }
    CAudioFade& operator=(CAudioFade&& other) noexcept;
    ~CAudioFade() { stop(); }

    void start(CKernelContext& kernels, int samples, int channelCount);
    // Replaces the outputs of `from` by the fade to those of `to`, which are used up. The step may not be
    // longer than samplesLeft().
    void mix(CAudioModuleStep& from, CAudioModuleStep& to);
    // So many samples, fewer than are left, have been mixed without this object.
    void skip(int samples) { samplesLeft_ -= samples; }
    void stop();
    int samplesLeft() const { return samplesLeft_; }

private:
    CKernelContext* kernels_ = nullptr;
    CInlineArray<CBufferRef, 8> states_; // by channel
    int samplesLeft_ = 0;
};

} // namespace qel
