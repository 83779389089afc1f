// What filters let through.
#pragma once

#include "CObject.h"

#include <map>
#include <vector>

namespace qel {

// The gain over frequency of the filters in an array of the audio side's definitions, read from the shared
// tree, so that what is drawn is what is heard. Knows chains of high-passes and low-passes of first and
// second order, by the analogue prototype, which differs from the digital filter only near half the sample
// rate; any other part counts as passing everything.
class CFilterResponse
{
public:
    // Reads the filters of an array; those of the one before are forgotten.
    void load(const CObject& array);

    // Decibels, at least kFloorDb; 0 for a filter that is not there.
    double getGainDb(std::int32_t index, double frequencyHz, double cornerHz) const;

    static constexpr double kFloorDb = -300.0;

private:
    struct Section
    {
        bool isHighPass = true;
        bool isSecondOrder = false;
        double cornerFactor = 1.0;
        double q = 0.0;
    };
    using Chain = std::vector<Section>;

    static void addSections(const CObject* generator, double cornerFactor, double qFactor, Chain& chain);

    std::map<std::int32_t, Chain> chains_;
};

} // namespace qel
