// The inaudible noise that keeps recursive stages clear of denormals.
#pragma once

#include "CKernelContext.h"

#include <cstdint>

namespace qel {

// Noise of +-1e-11 from a 32-bit congruential generator whose state lives in a pool buffer. Seeds come from a
// process-wide counter, so that no two channels carry the same noise, and are drawn when a source is made: at
// their first use sources come in an order that depends on where steps end. The state is taken at the first
// use and given back by stop(). Audio thread, but for the constructor and the destructor.
class CNoiseSource
{
public:
    explicit CNoiseSource(CKernelContext& kernels);
    ~CNoiseSource() { stop(); }
    CNoiseSource(const CNoiseSource&) = delete;
    CNoiseSource& operator=(const CNoiseSource&) = delete;

    // A fresh buffer of `count` samples of noise; the caller owns one reference.
    CBufferRef make(int count);
    // A fresh buffer of the input with noise added.
    CBufferRef addTo(CBufferRef input, int count);
    void stop();

    void resolveKernels();

    // Starts the process-wide counter anew, so that two renders in one process can be compared bit for bit.
    static void restartSeeds();

private:
    void start();

    CKernelContext& kernels_;
    const std::uint32_t seed_;
    CBufferRef state_;
    int noiseKernel_ = -1;
    int addKernel_ = -1;
};

} // namespace qel
