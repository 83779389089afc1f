// The inaudible noise that keeps recursive stages clear of denormals.
#pragma once

#include "CKernelContext.h"

namespace qel {

// Noise of +-1e-11 from a 32-bit congruential generator whose seed lives in a pool buffer. Seeds come from a
// process-wide counter, so that no two channels carry the same noise. The seed is taken at the first use and
// given back by stop(). Audio thread.
class CNoiseSource
{
public:
    explicit CNoiseSource(CKernelContext& kernels) : kernels_(kernels) {}
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
    CBufferRef seed_;
    int noiseKernel_ = -1;
    int addKernel_ = -1;
};

} // namespace qel
