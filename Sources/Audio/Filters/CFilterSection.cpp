// One stage of a filter cascade.
#include "CFilterSection.h"

#include <algorithm>
#include <limits>

namespace qel {

namespace {

bool isHalfBand(EFilterFamily family)
{
    return family >= EFilterFamily::kHalfBand2 && family <= EFilterFamily::kHalfBand16;
}

// Delay at 0 Hz of a path of all-pass sections (c + z^-2) / (1 + c z^-2).
double pathDelaySamples(const CInlineArray<double, CFilterSection::kMaxCoefficients / 2>& coefficients)
{
    double delay = 0.0;
    for (const double c : coefficients) {
        delay += 2.0 * (1.0 - c) / (1.0 + c);
    }
    return delay;
}

} // namespace

CFilterSection CFilterSection::biquad(EFilterFamily family, const CBiquadPolynomials& p)
{
    // Sections run with a leading coefficient of 1, which a numerator that begins with an exact 0 cannot be
    // brought to.
    const double b0 = p.b0 != 0.0 ? p.b0 : std::numeric_limits<double>::epsilon();
    CFilterSection section;
    section.kind = family;
    section.gain = b0 / p.a0;
    section.zeros = {p.b1 / b0, p.b2 / b0};
    section.poles = {-p.a1 / p.a0, -p.a2 / p.a0};
    return section;
}

void CFilterSection::writeCoefficients(double* block) const
{
    std::copy(poles.begin(), poles.end(), std::copy(zeros.begin(), zeros.end(), block));
}

double CFilterSection::latencySamples() const
{
    // The two paths, the second a sample late, are in phase at 0 Hz, so the delay of their sum is their mean.
    return isHalfBand(kind) ? 0.5 * (pathDelaySamples(zeros) + pathDelaySamples(poles) + 1.0) : 0.0;
}

} // namespace qel
