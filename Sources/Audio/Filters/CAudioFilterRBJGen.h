// Second-order filters of the Audio EQ Cookbook.
#pragma once

#include "CAudioFilterGen.h"

namespace qel {

// One biquad section from frequency, gain and bandwidth. The bandwidth is in octaves between the -3 dB
// points, with `is-q` a Q. `is-type2` leaves out the compensation for the narrowing that the bilinear
// transform causes near half the sample rate. `is-inverted` turns the polarity of a low-pass or high-pass,
// which pairs it with its counterpart in a crossover of second order.
//
// Source: Robert Bristow-Johnson, Audio EQ Cookbook.
class CAudioFilterRBJGen : public CAudioFilterGen
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void appendSections(CFilterSections& outList, double sampleRateHz,
                        std::span<const double> params) const override;

private:
    enum class EType : std::int32_t
    {
        kLowPass,
        kHighPass,
        kBandPass,      // peak of 0 dB
        kBandPassSkirt, // constant skirt, peak of Q
        kNotch,
        kAllPass,
        kPeaking,
        kLowShelf,
        kHighShelf,
        kAllPassRadius, // by the radius of its poles instead of their bandwidth
    };

    // Frequency and width as the polynomials need them.
    struct Shape;
    Shape shapeOf(double sampleRateHz, std::span<const double> params) const;
    CBiquadPolynomials polynomials(const Shape& shape) const;
    static CBiquadPolynomials shelf(const Shape& shape, double c);

    EType type_ = EType::kLowPass;
    bool isHighOrder_ = false;
    bool isQ_ = false;
    bool isType2_ = false;
    bool isInverted_ = false;
};

} // namespace qel
