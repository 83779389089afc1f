// Peaking filter with the gain and bandwidth of its analogue model.
#include "CAudioFilterMagnusGen.h"

#include "FilterLimits.h"
#include "Math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

constexpr std::int32_t kPeaking = 1;

constexpr double kMinOctaves = 1e-3;
// Bands of a hundredth of an octave at megahertz rates are lost in rounding; the poles still stay inside the
// unit circle.
constexpr double kMinSquare = 1e-20;

// Centre and lower band end, in parts of half the sample rate.
struct Band
{
    double centre;
    double lower;
};

Band bandOf(double cycles, double bandwidthOctaves)
{
    Band band;
    band.centre = 2.0 * cycles;
    band.lower = 2.0 * cycles * math::pow(0.5, bandwidthOctaves / 2.0);
    band.centre = band.centre > 0.99 ? 0.99 : band.centre;
    band.lower = band.lower > 0.98 ? 0.98 : band.lower;
    // The equations are singular where the centre meets the fixed point at a quarter of the sample rate.
    if (std::fabs(band.centre - 0.5) < 0.01) {
        band.centre *= 0.99;
        band.lower *= 0.99;
    }
    return band;
}

// Squared gains of the analogue filter at a quarter of the sample rate and at half of it.
struct FixedPoints
{
    double r1;
    double r2;
};

FixedPoints fixedPoints(const Band& band, double g)
{
    const double w2 = band.centre * band.centre;
    const double w4 = w2 * w2;
    const double v2 = band.lower * band.lower;
    const double v4 = v2 * v2;
    const double G = g * g;
    const double X = v2 * (G - g);
    const double Q = 2.0 * w2 * v2 * (1.0 - G);
    const double H = (v4 + w4) * (g - 1.0);
    const double P = G * H + g * Q;
    const double U = 4.0 * w4 + 0.25;
    const double T = (1.0 + w4) * X;
    return {(P + X * U) / (X * U + Q + H), (P + T) / (T + Q + H)};
}

CBiquadPolynomials peaking(const Band& band, double g)
{
    const double G = g * g;
    const auto [R1, R2] = fixedPoints(band, g);
    const double t = math::tan(std::numbers::pi * band.centre / 2.0);
    const double t2 = t * t;
    const double A = std::sqrt((1.0 - G) / (R2 - G));
    const double B = std::sqrt(R2) * A;
    const double F = 1.0 / ((R1 - G) * (R2 - G));
    const double C = (R2 - R1) * (1.0 - G) + (1.0 - R1) * (R2 - G) * (t2 * t2);
    const double D = -2.0 * t2 * (R2 - G) * (1.0 - G);
    const double E = 2.0 * t2 * (R1 - G) * (R2 - G) * A;
    const double Sa = std::sqrt(std::max((C + D + E) * F, kMinSquare));
    const double Sb = std::sqrt(std::max((G * C + R1 * D + std::sqrt(R2) * E) * F, kMinSquare));
    return {Sb + B + t2, 2.0 * (t2 - B), t2 - Sb + B, Sa + A + t2, 2.0 * (t2 - A), A - Sa + t2};
}

} // namespace

CError CAudioFilterMagnusGen::init()
{
    QEL_TRY(CAudioFilterGen::init(), getFullName());
    QEL_TRY(
        checkType(5, "@qelstr_CAudioFilterMagnusGen_init_InvalidType Invalid filter type '%1' specified."),
        getFullName());
    if (getType() != kPeaking) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterMagnusGen_init_NotAvailable Filter type '%1' is not available.",
                 getType());
    }
    return {};
}

void CAudioFilterMagnusGen::appendSections(CFilterSections& outList, double sampleRateHz,
                                           std::span<const double> params) const
{
    if (params.size() < kSecondOrderParams) {
        return;
    }
    // A gain of 1 has no band ends to solve for.
    const double gain =
        std::fabs(1.0 - params[1]) < 0.001 ? 0.999 : std::clamp(params[1], kMinGain, kMaxGain);
    const Band band = bandOf(std::max(params[0] / sampleRateHz, kMinCycles),
                             std::clamp(params[2], kMinOctaves, kMaxOctaves));
    outList.push(CFilterSection::biquad(EFilterFamily::kBiquadCommon, peaking(band, gain)));
}

} // namespace qel
