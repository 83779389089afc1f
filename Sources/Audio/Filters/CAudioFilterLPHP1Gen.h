// First-order low-pass and high-pass filters, up to four in a row.
#pragma once

#include "CAudioFilterGen.h"

namespace qel {

// Types 0 to 3 are one to four equal one-pole low-passes, types 4 to 7 as many high-passes, all in one
// section. Takes the frequency at which the whole chain is 3 dB down, and with `use-gain` an output gain.
class CAudioFilterLPHP1Gen : public CAudioFilterGen
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void appendSections(CFilterSections& outList, double sampleRateHz,
                        std::span<const double> params) const override;

private:
    bool usesGain_ = false;
};

} // namespace qel
