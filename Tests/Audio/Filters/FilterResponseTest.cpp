// What the delivered filters do to the spectrum, and that they are stable.
#include "CAudioFilterGenArray.h"
#include "FilterFixture.h"

namespace qel {
namespace {

using test::Complex;
using test::decibels;
using test::response;

class FilterResponse : public test::FilterFixture
{
protected:
    void SetUp() override { loadDeliveredFilters(); }
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
    constexpr double kHighRateHz = 384000.0;
    for (const bool isLow : {true, false}) {
        const auto& array = get<CAudioFilterGenArray>(isLow ? "audio.fltarray.lp1" : "audio.fltarray.hp1");
        for (int order = 1; order <= 4; ++order) {
            const auto gain = [&](double cornerHz, double freqHz) {
                CFilterSections list;
                array.getGen(order)->generate(list, kHighRateHz, {&cornerHz, 1});
                return std::abs(response(list, freqHz / kHighRateHz));
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

// Chains of low-passes get there below half the rate: with 20 kHz at 44.1 kHz, held at pi they would let 1.35
// dB too much of 10 kHz through.
TEST_F(FilterResponse, FirstOrderCornersFollowTheirFormulaBeyondPi)
{
    for (const double freqHz : {5000.0, 15000.0, 20000.0}) {
        const double x = 2.0 - std::cos(9.762843238257704 * freqHz / 44100.0);
        EXPECT_NEAR(sections("lp1b", 44100.0, {freqHz})[0].poles[0], 1.0 + std::sqrt(x * x - 1.0) - x, 1e-12);
    }
}

// --- stability

// True if all poles lie inside the unit circle and every number is one.
bool isStable(const CFilterSection& section)
{
    bool isFinite = std::isfinite(section.gain);
    for (const auto* list : {&section.zeros, &section.poles}) {
        for (const double value : *list) {
            isFinite = isFinite && std::isfinite(value);
        }
    }
    const auto kind = section.kind;
    if (kind <= EFilterFamily::kBiquadNotch) {
        const double a1 = section.poles[0];
        const double a2 = section.poles[1];
        return isFinite && std::fabs(a2) < 1.0 && std::fabs(a1) < 1.0 - a2;
    }
    if (kind <= EFilterFamily::kHighPass4) {
        return isFinite && section.poles[0] >= 0.0 && section.poles[0] < 1.0;
    }
    bool isInside = isFinite;
    for (const auto* list : {&section.zeros, &section.poles}) {
        for (const double c : *list) {
            isInside = isInside && std::fabs(c) < 1.0;
        }
    }
    return isInside;
}

TEST_F(FilterResponse, EveryFilterIsStableForEveryParameterAtEveryRate)
{
    loadDeliveredFilters();
    const CObject& all = get<CObject>("audio.flt");
    // Beyond what parameters allow: nothing, half the rate and far above it, and slots that read 0.
    const double freqsHz[] = {0.0,     0.5,     1.0,     3.0,     20.0,   77.0,   100.0,
                              300.0,   999.0,   2000.0,  3999.0,  4000.0, 4001.0, 10000.0,
                              12000.0, 20000.0, 21000.0, 22050.0, 1e5,    1e9};
    const double gainsDb[] = {-300.0, -96.0, -48.0, -12.0, -0.01, 0.0, 0.001, 6.0, 12.0, 48.0, 96.0};
    const double widths[] = {0.0, 0.01, 0.1, 0.5, 0.7071, 1.0, 2.0, 5.0, 7.0, 50.0};
    for (std::size_t i = 0; i < all.getChildCount(); ++i) {
        const auto& generator = dynamic_cast<const CAudioFilterGen&>(*all.getChild(i));
        CFilterSections list;
        for (const double rateHz : {8000.0, 44100.0, 48000.0, 192000.0, 768000.0, 3072000.0}) {
            for (const double freqHz : freqsHz) {
                for (const double gainDb : gainsDb) {
                    for (const double width : widths) {
                        const double params[] = {freqHz, std::pow(10.0, gainDb / 20.0), width};
                        generator.generate(list, rateHz, params);
                        for (const CFilterSection& section : list) {
                            ASSERT_TRUE(isStable(section))
                                << generator.getFullName().toUtf8() << " at " << rateHz << ": " << freqHz
                                << " Hz, " << gainDb << " dB, " << width;
                        }
                    }
                }
            }
        }
    }
}

} // namespace
} // namespace qel
