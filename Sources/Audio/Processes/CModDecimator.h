// Halves the sample rate.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// Takes every second sample; the half-band filter in front has removed what would fold down. Rate and latency
// in samples of its stream halve, so the latency in seconds stays. A phase bit keeps the grid over steps of
// any length, odd ones included: a step of one sample may give nothing. The first sample after a reset is one
// that is taken.
class CModDecimator : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;

    void resolveKernels() override;
    void syncLinks() override;
    void reset(double positionSec) override;
    std::int64_t steadySamples(double rateHz) const override
    {
        return phase_ == 0 ? CAudioProcessBase::steadySamples(rateHz) : 0;
    }

protected:
    void step(int count) override;

private:
    int takeFirst_ = -1;                                 // kernels: the samples 0, 2, 4 ...
    int takeSecond_ = -1;                                // and 1, 3, 5 ...
    CInlineArray<const CAudioStreamFormat*, 8> formats_; // of the output, beside channels()
    int phase_ = 0;                                      // samples to skip until one is taken, 0 or 1
};

using CModDecimatorDef = CAudioModuleDef<CModDecimator>;
extern template class CAudioModuleDef<CModDecimator>;

} // namespace qel
