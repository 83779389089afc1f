// The crossfade from a module instance to its successor.
#pragma once

#include "CAudioModule.h"

namespace qel {

// A raised-cosine fade on every channel of an instance, over a fixed number of samples. start(), mix() step
// by step until samplesLeft() is 0, stop(). Holds one small state buffer while it runs. Audio thread.
class CAudioFade
{
public:
    CAudioFade() = default;
    CAudioFade(CAudioFade&& other) noexcept { *this = std::move(other); }
    CAudioFade& operator=(CAudioFade&& other) noexcept;
    ~CAudioFade() { stop(); }

    struct Kernels
    {
        int places = -1;
        int mix = -1;
    };
    static Kernels findKernels(const CKernelContext& kernels);

    void start(CKernelContext& kernels, const Kernels& ids, int samples);
    // Replaces the outputs of `from` by the fade to those of `to`, which are used up. The step may not be
    // longer than samplesLeft().
    void mix(CAudioModuleStep& from, CAudioModuleStep& to);
    // So many samples, no more than are left, have been mixed without this object.
    void skip(int samples) { samplesLeft_ -= samples; }
    void stop();
    int samplesLeft() const { return samplesLeft_; }

private:
    CKernelContext* kernels_ = nullptr;
    Kernels ids_;
    CBufferRef oscillator_;
    int samplesLeft_ = 0;
};

} // namespace qel
