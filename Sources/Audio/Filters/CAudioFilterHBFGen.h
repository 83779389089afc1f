// Half-band filters with given coefficients.
#pragma once

#include "CAudioFilterGen.h"

namespace qel {

// One section from the tree's coefficient lists `a` and `b`, each half the `order` long (even, 2 to 16).
// Types 0 and 2 are the two-path all-pass filter, with an output factor that makes 0 Hz come out at 1 (type
// 0) or without one; type 1 runs all coefficients as a chain of first-order all-passes, of which there are
// six. Takes no parameters.
class CAudioFilterHBFGen : public CAudioFilterGen
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void appendSections(CFilterSections& outList, double, std::span<const double>) const override
    {
        outList.push(section_);
    }
    double latencySamples() const override { return section_.latencySamples(); }

private:
    CError readCoefficients();
    CError readOrder();

    std::int32_t order_ = 0;
    CString a_; // coefficients as text
    CString b_;
    CFilterSection section_;
};

} // namespace qel
