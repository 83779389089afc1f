// Doubles the sample rate.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// Puts a zero behind every sample, which leaves the images above the old band limit to the half-band filter
// behind it, and doubles the level, which makes up for the zeros. Rate and latency in samples of its stream
// double, so the latency in seconds stays. Two samples come out for each that goes in, in the same step.
class CModInterpolator : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;

    void resolveKernels() override;
    void syncLinks() override;

protected:
    void step(int count) override;

private:
    int kernel_ = -1;
    CInlineArray<const CAudioStreamFormat*, 8> formats_; // of the output, beside channels()
};

using CModInterpolatorDef = CAudioModuleDef<CModInterpolator>;
extern template class CAudioModuleDef<CModInterpolator>;

} // namespace qel
