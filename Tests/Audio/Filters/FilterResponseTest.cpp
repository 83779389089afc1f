// What the delivered filters do to the spectrum.
#include "CAudioFilterGenArray.h"
#include "FilterFixture.h"

#include <array>

namespace qel {
namespace {

using test::Complex;
using test::decibels;
using test::response;

class FilterResponse : public test::FilterTest
{
protected:
    void SetUp() override { loadDeliveredFilters(); }

    double gainAt(const std::string& entry, double freqHz, double rateHz,
                  std::initializer_list<double> params)
    {
        return std::abs(response(sections(entry, rateHz, params), freqHz / rateHz));
    }
};

constexpr double kRates[] = {8000.0, 44100.0, 48000.0, 192000.0, 1536000.0, 3072000.0};

// --- crossovers

// Largest deviation from 0 dB of low + high over the audible band.
template <class Sections>
double unevennessDb(const Sections& low, const Sections& high, double rateHz)
{
    double worst = 0.0;
    for (double freqHz = 1.0; freqHz < 0.499 * rateHz; freqHz *= 1.03) {
        worst = std::max(
            worst, std::fabs(decibels(response(low, freqHz / rateHz) + response(high, freqHz / rateHz))));
    }
    return worst;
}

TEST_F(FilterResponse, LinkwitzRileyBandsSumFlat)
{
    const double exactQ = std::sqrt(0.5);
    for (const double rateHz : kRates) {
        for (const double freqHz : {20.0, 100.0, 300.0}) {
            const auto unevenness = [&](const char* low, const char* high, double q) {
                return unevennessDb(sections(low, rateHz, {freqHz, 1.0, q}),
                                    sections(high, rateHz, {freqHz, 1.0, q}), rateHz);
            };
            // Coefficients keep fewer digits the further the corner lies below the rate.
            const double rounding = rateHz > 1e6 ? 1e-3 : rateHz > 1e5 ? 1e-6 : 1e-9;
            EXPECT_LT(unevenness("lp4_lr", "hp4_lr", exactQ), rounding) << freqHz << " at " << rateHz;
            EXPECT_LT(unevenness("lp4_lr", "hp4_lr", 0.7071), 2e-4 + rounding) << freqHz << " at " << rateHz;
            EXPECT_LT(unevenness("lp2_rbj_q", "hp2_rbj_qi", 0.5), rounding) << freqHz << " at " << rateHz;
            EXPECT_GT(unevenness("lp2_rbj_q", "hp2_rbj_q", 0.5), 20.0)
                << "without the inversion there is a notch";
        }
    }
}

TEST_F(FilterResponse, FirstOrderChainsHaveTheirCornerAndTheSlopeThatTheirPlaceInTheArraySays)
{
    constexpr double kRateHz = 384000.0;
    for (const bool isLow : {true, false}) {
        const auto& array = get<CAudioFilterGenArray>(isLow ? "audio.fltarray.lp1" : "audio.fltarray.hp1");
        for (int order = 1; order <= 4; ++order) {
            const auto gain = [&](double cornerHz, double freqHz) {
                CFilterSections list;
                array.getGen(order)->generate(list, kRateHz, {&cornerHz, 1});
                return std::abs(response(list, freqHz / kRateHz));
            };
            for (const double freqHz : {20.0, 100.0, 300.0}) {
                EXPECT_NEAR(20.0 * std::log10(gain(freqHz, freqHz)), -3.0103, 0.04) << isLow << ' ' << order;
            }
            const double octave =
                isLow ? gain(100.0, 4000.0) / gain(100.0, 8000.0) : gain(100.0, 2.0) / gain(100.0, 1.0);
            EXPECT_NEAR(octave / std::pow(2.0, order), 1.0, 0.02) << isLow << ' ' << order;
            EXPECT_NEAR(gain(100.0, isLow ? 1e-3 : 20000.0), 1.0, 2e-3) << isLow << ' ' << order;
        }
    }
}

TEST_F(FilterResponse, OnlyTheLowPassChainsTakeAGain)
{
    EXPECT_EQ(sections("lp1b", 48000.0, {1000.0, 0.25})[0].gain, 0.25);
    EXPECT_EQ(sections("lp1b", 48000.0, {1000.0})[0].gain, 1.0);
    EXPECT_EQ(sections("hp1b", 48000.0, {1000.0, 0.25})[0].gain, 1.0);
}

// Chains of low-passes get there below half the rate: with 20 kHz at 44.1 kHz, held at pi they would let 1.35
// dB too much of 10 kHz through.
TEST_F(FilterResponse, FirstOrderCornersFollowTheirFormulaBeyondPi)
{
    for (const double freqHz : {5000.0, 15000.0, 20000.0}) {
        const double x = 2.0 - std::cos(9.762843238257704 * freqHz / 44100.0);
        EXPECT_NEAR(sections("lp1b", 44100.0, {freqHz})[0].poles[0], 1.0 + std::sqrt(x * x - 1.0) - x, 1e-12);
    }
}

// --- high-passes of higher order

using Roots = std::vector<Complex>;

Complex polynomialAt(const std::vector<double>& coefficients, Complex x)
{
    Complex sum = 0.0;
    for (std::size_t i = coefficients.size(); i > 0; --i) {
        sum = sum * x + coefficients[i - 1];
    }
    return sum;
}

// Roots of a monic polynomial, lowest coefficient first, by Durand and Kerner.
Roots rootsOf(const std::vector<double>& coefficients)
{
    Roots roots;
    for (std::size_t i = 1; i < coefficients.size(); ++i) {
        roots.push_back(std::pow(Complex(0.4, 0.9), static_cast<double>(i)));
    }
    for (int pass = 0; pass < 500; ++pass) {
        for (std::size_t i = 0; i < roots.size(); ++i) {
            Complex divisor = 1.0;
            for (std::size_t j = 0; j < roots.size(); ++j) {
                divisor *= i == j ? 1.0 : roots[i] - roots[j];
            }
            roots[i] -= polynomialAt(coefficients, roots[i]) / divisor;
        }
    }
    return roots;
}

Complex allPole(const Roots& poles, Complex s)
{
    Complex h = 1.0;
    for (const Complex pole : poles) {
        h *= -pole / (s - pole);
    }
    return h;
}

Roots butterworthPoles(int order)
{
    Roots poles;
    for (int k = 0; k < order; ++k) {
        poles.push_back(std::polar(1.0, std::numbers::pi * (0.5 + (2.0 * k + 1.0) / (2.0 * order))));
    }
    return poles;
}

// Of the reverse Bessel polynomial, scaled so that the response is 3 dB down at 1.
Roots besselPoles(int order)
{
    std::vector<double> coefficients;
    for (int k = 0; k <= order; ++k) {
        coefficients.push_back(
            std::tgamma(2.0 * order - k + 1.0) /
            (std::pow(2.0, order - k) * std::tgamma(k + 1.0) * std::tgamma(order - k + 1.0)));
    }
    Roots poles = rootsOf(coefficients);
    double low = 0.1;
    double high = 10.0;
    for (int i = 0; i < 100; ++i) {
        const double middle = 0.5 * (low + high);
        (std::norm(allPole(poles, Complex(0.0, middle))) > 0.5 ? low : high) = middle;
    }
    for (Complex& pole : poles) {
        pole /= low;
    }
    return poles;
}

TEST_F(FilterResponse, DCFiltersAreBesselAndButterworthHighPasses)
{
    // The factors in the tree come from tables of two or three digits; those of hp6_bessel are off the most.
    constexpr double kToleranceDb = 0.11;
    constexpr double kRateHz = 384000.0;
    for (int order = 2; order <= 6; ++order) {
        for (const bool isBessel : {true, false}) {
            const std::string entry = "hp" + std::to_string(order) + (isBessel ? "_bessel" : "_bworth");
            const Roots poles = isBessel ? besselPoles(order) : butterworthPoles(order);
            for (const double cornerHz : {30.0, 100.0}) {
                const CFilterSections cascade = sections(entry, kRateHz, {cornerHz, 1.0, 0.7071});
                EXPECT_EQ(cascade.size(), static_cast<std::size_t>(order + 1) / 2) << entry;
                for (double ratio = 0.25; ratio < 40.0; ratio *= 1.1) {
                    // A high-pass is the low-pass at the reciprocal frequency.
                    const Complex wanted = allPole(poles, Complex(0.0, -1.0 / ratio));
                    const Complex is = response(cascade, ratio * cornerHz / kRateHz);
                    ASSERT_NEAR(decibels(is), decibels(wanted), kToleranceDb) << entry << " at " << ratio;
                }
            }
        }
    }
}

// --- peaking filter and shelves

TEST_F(FilterResponse, PeakingFilterHasItsGainAtTheCentreAndTheRootOfItAtTheBandEnds)
{
    const CFilterSections peak = sections("peak_magnusB", 44100.0, {100.0, 2.0, 2.0});
    const auto gain = [&peak](double freqHz) { return std::abs(response(peak, freqHz / 44100.0)); };
    EXPECT_NEAR(gain(100.0), 2.000, 5e-4);
    EXPECT_NEAR(gain(50.0), 1.461, 5e-4);
    EXPECT_NEAR(gain(200.0), 1.461, 5e-4);
    EXPECT_NEAR(gain(1e-3), 1.000, 5e-4);
    EXPECT_NEAR(gain(22050.0), 1.000, 5e-4);

    for (const double rateHz : kRates) {
        for (const double freqHz : {20.0, 100.0, 300.0}) {
            for (const double wanted : {0.25, 0.5, 0.9, 1.5, 4.0}) {
                EXPECT_NEAR(gainAt("peak_magnusB", freqHz, rateHz, {freqHz, wanted, 2.0}) / wanted, 1.0, 1e-9)
                    << freqHz << " at " << rateHz;
            }
        }
    }
}

TEST_F(FilterResponse, PeakingFilterIsExactUpToItsHighestFrequency)
{
    // A quarter of the sample rate is singular and moved aside; half of it is the limit.
    for (const double freqHz : {3000.0, 9000.0, 15000.0, 20000.0}) {
        EXPECT_NEAR(gainAt("peak_magnusB", freqHz, 48000.0, {freqHz, 3.0, 1.0}), 3.0, 1e-6) << freqHz;
    }
    EXPECT_NEAR(gainAt("peak_magnusB", 12000.0, 48000.0, {12000.0, 3.0, 1.0}), 3.0, 0.01);
    EXPECT_NEAR(gainAt("peak_magnusB", 0.495 * 48000.0, 48000.0, {24000.0, 3.0, 1.0}), 3.0, 1e-6);
    // No gain is computed as nearly none.
    EXPECT_NEAR(gainAt("peak_magnusB", 1000.0, 48000.0, {1000.0, 1.0, 1.0}), 0.999, 1e-6);
    EXPECT_NEAR(gainAt("peak_magnusB", 1000.0, 48000.0, {1000.0, 1.0009, 1.0}), 0.999, 1e-6);
}

TEST_F(FilterResponse, CookbookFiltersHaveTheirGainsAtTheEnds)
{
    struct Case
    {
        const char* entry;
        double low;
        double atFreq;
        double high;
    };
    // Gain 4, 1 octave or Q 1; corners at 1000 Hz.
    const Case cases[] = {
        {"lp2_rbj", 1.0, 1.414, 0.0},   {"hp2_rbj", 0.0, 1.414, 1.0}, {"lp2_rbj2", 1.0, 1.414, 0.0},
        {"hp2_rbj2", 0.0, 1.414, 1.0},  {"lp2_rbj_q", 1.0, 1.0, 0.0}, {"hp2_rbj_q", 0.0, 1.0, 1.0},
        {"bp2_rbj2", 0.0, 1.0, 0.0},    {"ls_rbj", 4.0, 2.0, 1.0},    {"hs_rbj", 1.0, 2.0, 4.0},
        {"bp2b_rbj2", 0.0, 1.414, 0.0}, {"ap_rbj", 1.0, 1.0, 1.0},
    };
    for (const Case& filter : cases) {
        const CFilterSections list = sections(filter.entry, 192000.0, {1000.0, 4.0, 1.0});
        const auto gain = [&list](double freqHz) { return std::abs(response(list, freqHz / 192000.0)); };
        EXPECT_NEAR(gain(0.01), filter.low, 1e-3) << filter.entry;
        EXPECT_NEAR(gain(1000.0), filter.atFreq, 2e-3) << filter.entry;
        EXPECT_NEAR(gain(95999.0), filter.high, 1e-3) << filter.entry;
    }
    // By radius, the all-pass turns twice around.
    const CFilterSections radius = sections("ap2_rbj", 48000.0, {1000.0, 1.0, 0.9});
    for (double freqHz = 10.0; freqHz < 24000.0; freqHz *= 1.3) {
        EXPECT_NEAR(std::abs(response(radius, freqHz / 48000.0)), 1.0, 1e-12);
    }
    EXPECT_NEAR(std::arg(response(radius, 1000.0 / 48000.0)), -std::numbers::pi, 0.8);
}

TEST_F(FilterResponse, BandwidthIsTheDistanceOfTheHalfPowerPoints)
{
    const CFilterSections band = sections("bp2_rbj2", 384000.0, {1000.0, 1.0, 2.0});
    EXPECT_NEAR(decibels(response(band, 500.0 / 384000.0)), -3.01, 0.01);
    EXPECT_NEAR(decibels(response(band, 2000.0 / 384000.0)), -3.01, 0.01);
    // An all-pass of one octave, by its 3 dB points, has a Q of 1.414: a quarter turn away a half-turn's
    // middle.
    EXPECT_NEAR(
        std::fabs(std::arg(response(sections("ap_rbj", 384000.0, {1000.0, 1.0, 1.0}), 1000.0 / 384000.0))),
        std::numbers::pi, 1e-6);
}

// --- half-band filters

struct HalfBand
{
    const char* entry;
    double attenuationDb;
    double transition; // in parts of the sample rate
};

constexpr HalfBand kHalfBands[] = {
    {"hbf212t20", 212, 0.05}, {"hbf186t20", 186, 0.05}, {"hbf159t20", 159, 0.05}, {"hbf133t20", 133, 0.05},
    {"hbf106t20", 106, 0.05}, {"hbf80t20", 80, 0.05},   {"hbf53t20", 53, 0.05},   {"hbf225t4", 225, 0.25},
    {"hbf171t4", 171, 0.25},  {"hbf116t4", 116, 0.25},  {"hbf62t4", 62, 0.25},
};

TEST_F(FilterResponse, HalfBandFiltersReachTheirAttenuation)
{
    for (const HalfBand& filter : kHalfBands) {
        const CFilterSections list = sections(filter.entry, 96000.0, {});
        ASSERT_EQ(list.size(), 1u);
        double loudest = 0.0;
        double ripple = 0.0;
        for (double cycles = 0.25 + filter.transition / 2.0; cycles <= 0.5; cycles += 0.0001) {
            loudest = std::max(loudest, std::abs(response(list, cycles)));
            ripple = std::max(ripple, std::fabs(std::abs(response(list, 0.5 - cycles)) - 1.0));
        }
        // Rounding of the evaluation itself stands at about -310 dB.
        EXPECT_NEAR(20.0 * std::log10(loudest), -filter.attenuationDb, 1.0) << filter.entry;
        EXPECT_LT(ripple, 1e-5) << filter.entry;
        EXPECT_NEAR(std::abs(response(list, 0.0)), 1.0, 1e-15) << filter.entry;
    }
}

TEST_F(FilterResponse, HalfBandLatencyIsTheGroupDelayAtZero)
{
    for (const HalfBand& filter : kHalfBands) {
        const auto& generator = get<CAudioFilterGen>(std::string("audio.flt.") + filter.entry);
        const CFilterSections list = sections(filter.entry, 96000.0, {});
        constexpr double kCycles = 1e-5;
        const double phase = std::arg(response(list, kCycles));
        EXPECT_NEAR(generator.latencySamples(), -phase / (2.0 * std::numbers::pi * kCycles), 1e-5)
            << filter.entry;
    }
    EXPECT_EQ(get<CAudioFilterGen>("audio.flt.hp6_bessel").latencySamples(), 0.0);
    EXPECT_EQ(get<CAudioFilterGen>("audio.flt.peak_magnusB").latencySamples(), 0.0);
}

} // namespace
} // namespace qel
