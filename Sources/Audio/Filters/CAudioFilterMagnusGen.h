// Peaking filter with the gain and bandwidth of its analogue model.
#pragma once

#include "CAudioFilterGen.h"

namespace qel {

// One biquad from frequency, linear gain and bandwidth in octaves. The gain at the frequency is exact, and at
// half the sample rate it is what the analogue filter has there instead of 1, so that the curve does not
// narrow towards it. Only type 1, the peaking filter with gain 1 at 0 Hz, has a formula; the other types, up
// to 5, fail init.
class CAudioFilterMagnusGen : public CAudioFilterGen
{
public:
    CError init() override;
    void appendSections(CFilterSections& outList, double sampleRateHz,
                        std::span<const double> params) const override;
};

} // namespace qel
