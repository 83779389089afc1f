// Second-order filters of the Audio EQ Cookbook.
#include "CAudioFilterRBJGen.h"

#include "FilterLimits.h"
#include "Math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

// At 0 Hz and at half the sample rate the poles lie on the unit circle, and beyond it outside. No value that
// a user can set at the usual rates comes near these.
constexpr double kMaxCycles = 0.4999;
constexpr double kMinWidth = 1e-3; // octaves or Q
constexpr double kMaxWidth = 100.0;
// Several octaves just below half the sample rate would bring the poles so close to 1 and -1 that rounding
// puts them there.
constexpr double kMaxAlpha = 1e6;
constexpr double kMaxRadius = 1.0 - 1e-6;

constexpr EFilterFamily kFamilies[] = {
    EFilterFamily::kBiquadLowPass,  EFilterFamily::kBiquadHighPass, EFilterFamily::kBiquadBandPass,
    EFilterFamily::kBiquadBandPass, EFilterFamily::kBiquadNotch,    EFilterFamily::kBiquadCommon,
    EFilterFamily::kBiquadCommon,   EFilterFamily::kBiquadCommon,   EFilterFamily::kBiquadCommon,
    EFilterFamily::kBiquadCommon,
};

} // namespace

struct CAudioFilterRBJGen::Shape
{
    double c; // cosine and sine of the angular frequency
    double s;
    double width; // bandwidth or Q as given
    double a;     // square root of the gain
    double alpha;
    double beta;
};

void CAudioFilterRBJGen::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioFilterRBJGen;
    CAudioFilterGen::buildClassInfo(info);
    info.bind<&Self::isHighOrder_>("is-heq", false);
    info.bind<&Self::isQ_>("is-q", false);
    info.bind<&Self::isType2_>("is-type2", false);
    info.bind<&Self::isInverted_>("is-inverted", false);
}

CError CAudioFilterRBJGen::init()
{
    QEL_TRY(CAudioFilterGen::init(), getFullName());
    QEL_TRY(checkType(9, "@qelstr_CAudioFilterRBJGen_init_InvalidType Invalid filter type '%1' specified."),
            getFullName());
    if (isHighOrder_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterRBJGen_init_NoHEQ High-order equaliser filters are not available.");
    }
    type_ = static_cast<EType>(getType());
    return {};
}

CAudioFilterRBJGen::Shape CAudioFilterRBJGen::shapeOf(double sampleRateHz,
                                                      std::span<const double> params) const
{
    const double freqHz = std::clamp(params[0], kMinCycles * sampleRateHz, kMaxCycles * sampleRateHz);
    const double gain = std::clamp(params[1], kMinGain, kMaxGain);
    const double width = std::clamp(params[2], kMinWidth, isQ_ ? kMaxWidth : kMaxOctaves);
    const double w = 6.283185307179586 * freqHz / sampleRateHz;
    Shape shape{};
    shape.c = math::cos(w);
    shape.s = math::sin(w);
    shape.a = std::sqrt(gain);
    shape.width = width;
    if (isQ_) {
        shape.alpha = shape.s / (2.0 * width);
        shape.beta = std::sqrt(shape.a) * shape.s / width;
    } else {
        const double e = std::numbers::ln2 * 0.5 * width;
        const double alpha = shape.s * math::sinh(isType2_ ? e : e * w / shape.s);
        shape.alpha = std::min(alpha, kMaxAlpha);
        shape.beta = 2.0 * std::sqrt(shape.a) * shape.alpha;
    }
    return shape;
}

CBiquadPolynomials CAudioFilterRBJGen::polynomials(const Shape& shape) const
{
    const double c = shape.c;
    const double s = shape.s;
    const double a = shape.a;
    const double alpha = shape.alpha;
    switch (type_) {
    case EType::kLowPass:
        return {(1.0 - c) / 2.0, 1.0 - c, (1.0 - c) / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    case EType::kHighPass:
        return {(1.0 + c) / 2.0, -(1.0 + c), (1.0 + c) / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    case EType::kBandPass:
        return {alpha, 0.0, -alpha, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    case EType::kBandPassSkirt:
        return {s / 2.0, 0.0, -s / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    case EType::kNotch:
        return {1.0, -2.0 * c, 1.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    case EType::kAllPass:
        return {1.0 - alpha, -2.0 * c, 1.0 + alpha, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    case EType::kPeaking:
        return {1.0 + alpha * a, -2.0 * c, 1.0 - alpha * a, 1.0 + alpha / a, -2.0 * c, 1.0 - alpha / a};
    case EType::kLowShelf:
        return shelf(shape, c);
    case EType::kHighShelf: {
        // The low shelf mirrored at a quarter of the sample rate.
        CBiquadPolynomials mirrored = shelf(shape, -c);
        mirrored.b1 = -mirrored.b1;
        mirrored.a1 = -mirrored.a1;
        return mirrored;
    }
    case EType::kAllPassRadius:
        break;
    }
    const double p = std::min(shape.width, kMaxRadius);
    return {p * p, -2.0 * c * p, p * p * ((s / p) * (s / p) + (c / p) * (c / p)),
            1.0,   -2.0 * c * p, (s * p) * (s * p) + (c * p) * (c * p)};
}

CBiquadPolynomials CAudioFilterRBJGen::shelf(const Shape& shape, double c)
{
    const double a = shape.a;
    const double beta = shape.beta;
    return {a * ((a + 1.0) - (a - 1.0) * c + beta), 2.0 * a * ((a - 1.0) - (a + 1.0) * c),
            a * ((a + 1.0) - (a - 1.0) * c - beta), (a + 1.0) + (a - 1.0) * c + beta,
            -2.0 * ((a - 1.0) + (a + 1.0) * c),     (a + 1.0) + (a - 1.0) * c - beta};
}

void CAudioFilterRBJGen::appendSections(CFilterSections& outList, double sampleRateHz,
                                        std::span<const double> params) const
{
    if (params.size() < kSecondOrderParams) {
        return;
    }
    CBiquadPolynomials filter = polynomials(shapeOf(sampleRateHz, params));
    if (isInverted_ && (type_ == EType::kLowPass || type_ == EType::kHighPass)) {
        // Their kernels know the numerator's shape, so its leading coefficient alone carries the sign.
        filter.b0 = -filter.b0;
    }
    outList.push(CFilterSection::biquad(kFamilies[static_cast<std::size_t>(type_)], filter));
}

} // namespace qel
