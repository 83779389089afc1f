// Every filter family against the transfer function that it stands for.
#include "KernelRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace qel {
namespace {

using test::isSameBits;
using test::KernelRig;
using test::noiseSignal;
using test::randomSplit;
using test::Signal;

using Real = long double;
using Polynomial = std::vector<Real>; // in z^-1

struct Rational
{
    Polynomial numerator;
    Polynomial denominator;
};
// A filter is a sum of cascades.
using Cascade = std::vector<Rational>;
struct Case
{
    std::string name;
    EFilterFamily family;
    Signal coefficients;
    std::vector<Cascade> paths;
};

// Direct form I, in extended precision.
std::vector<Real> applySection(const Rational& section, const std::vector<Real>& in)
{
    std::vector<Real> out(in.size());
    for (std::size_t n = 0; n < in.size(); ++n) {
        Real sum = 0;
        for (std::size_t k = 0; k < section.numerator.size() && k <= n; ++k) {
            sum += section.numerator[k] * in[n - k];
        }
        for (std::size_t k = 1; k < section.denominator.size() && k <= n; ++k) {
            sum -= section.denominator[k] * out[n - k];
        }
        out[n] = sum / section.denominator[0];
    }
    return out;
}

std::vector<Real> reference(const Case& filter, const Signal& in)
{
    std::vector<Real> sum(in.size());
    for (const Cascade& path : filter.paths) {
        std::vector<Real> signal(in.begin(), in.end());
        for (const Rational& section : path) {
            signal = applySection(section, signal);
        }
        for (std::size_t n = 0; n < in.size(); ++n) {
            sum[n] += signal[n];
        }
    }
    return sum;
}

// A pole pair at radius r and the given angle.
Case biquad(const std::string& name, EFilterFamily family, Polynomial numerator, double n1, double n2)
{
    const double a1 = 2 * 0.97 * std::cos(0.3);
    const double a2 = -0.97 * 0.97;
    return {name, family, {n1, n2, a1, a2}, {{{std::move(numerator), {1, -a1, -a2}}}}};
}

Case firstOrder(std::size_t stages, bool isHighPass)
{
    const double k = 0.0625; // 1 - k is exact
    const Rational stage = isHighPass ? Rational{{1 - k, k - 1}, {1, k - 1}} : Rational{{k}, {1, k - 1}};
    const std::size_t family =
        static_cast<std::size_t>(EFilterFamily::kLowPass1) + stages - 1 + (isHighPass ? 4 : 0);
    return {(isHighPass ? "high-pass " : "low-pass ") + std::to_string(stages),
            static_cast<EFilterFamily>(family),
            {k},
            {Cascade(stages, stage)}};
}

// Any stable coefficients serve: 0 to 1, rising and interleaved as a designed filter has them.
Signal halfBandCoefficients(std::size_t order)
{
    const std::size_t sections = order / 2;
    Signal coefficients(order);
    for (std::size_t j = 0; j < sections; ++j) {
        const double step = 1.0 / static_cast<double>(order + 1);
        coefficients[j] = static_cast<double>(2 * j + 1) * step * step * 3;
        coefficients[sections + j] = static_cast<double>(2 * j + 2) * step * step * 3;
    }
    return coefficients;
}

Case halfBand(const Signal& coefficients)
{
    const std::size_t order = coefficients.size();
    Cascade pathA;
    Cascade pathB = {{{0, 1}, {1}}};
    for (std::size_t j = 0; j < order / 2; ++j) {
        const Real a = coefficients[j];
        const Real b = coefficients[order / 2 + j];
        pathA.push_back({{a, 0, 1}, {1, 0, a}});
        pathB.push_back({{b, 0, 1}, {1, 0, b}});
    }
    const std::size_t family = static_cast<std::size_t>(EFilterFamily::kHalfBand2) + order / 2 - 1;
    return {"half-band " + std::to_string(order),
            static_cast<EFilterFamily>(family),
            coefficients,
            {pathA, pathB}};
}

Case allPass()
{
    const Signal coefficients = {0.1, -0.3, 0.5, 0.7, 0.85, 0.95};
    Cascade path;
    for (const Real a : coefficients) {
        path.push_back({{a, 1}, {1, a}});
    }
    return {"all-pass chain", EFilterFamily::kAllPassChain, coefficients, {path}};
}

std::vector<Case> allCases()
{
    std::vector<Case> cases = {
        biquad("common", EFilterFamily::kBiquadCommon, {1, -1.25, 0.5}, -1.25, 0.5),
        biquad("low-pass", EFilterFamily::kBiquadLowPass, {1, 2, 1}, 9, 9),
        biquad("high-pass", EFilterFamily::kBiquadHighPass, {1, -2, 1}, 9, 9),
        biquad("band-pass", EFilterFamily::kBiquadBandPass, {1, 0, -1}, 9, 9),
        biquad("notch", EFilterFamily::kBiquadNotch, {1, -1.75, 1}, -1.75, 9),
        allPass(),
    };
    for (std::size_t stages = 1; stages <= 4; ++stages) {
        cases.push_back(firstOrder(stages, false));
        cases.push_back(firstOrder(stages, true));
    }
    for (std::size_t order = 2; order <= 16; order += 2) {
        cases.push_back(halfBand(halfBandCoefficients(order)));
    }
    return cases;
}

// A filter in a context of its own.
class FilterRig : public KernelRig
{
public:
    explicit FilterRig(const Case& filter)
        : kernels_(context().filterKernels(filter.family)),
          state_(bytes(static_cast<std::size_t>(kernels_.stateBytes)))
    {
        init(filter.coefficients);
    }

    void init(const Signal& coefficients)
    {
        context().submit(kernels_.init, 0, 0.0, {state_, buffer(coefficients)});
    }
    // Into a fresh state, or into the running one.
    void update(const Signal& coefficients, bool isInPlace)
    {
        const CBufferRef next = isInPlace ? state_ : bytes(static_cast<std::size_t>(kernels_.stateBytes));
        context().submit(kernels_.update, 0, 0.0, {next, state_, buffer(coefficients)});
        state_ = next;
    }
    Signal process(const Signal& in, const std::vector<std::size_t>& pieces)
    {
        return run(kernels_.run, 1.0, in, pieces);
    }
    Signal process(const Signal& in) { return process(in, {in.size()}); }
    Signal processWithGain(const Signal& in, double gain)
    {
        return run(kernels_.gainRun, gain, in, {in.size()});
    }

private:
    Signal run(int kernel, double gain, const Signal& in, const std::vector<std::size_t>& pieces)
    {
        // In place, as a module may do.
        const CBufferRef data = buffer(in);
        std::int32_t at = 0;
        for (const std::size_t piece : pieces) {
            context().submit(kernel, static_cast<std::uint32_t>(piece), gain,
                             {data.advancedBy(at), state_, data.advancedBy(at)});
            at += static_cast<std::int32_t>(piece);
        }
        const Signal out = read(data, in.size());
        context().release(data);
        return out;
    }

    CFilterKernels kernels_;
    CBufferRef state_;
};

TEST(FilterKernels, FollowTheDifferenceEquationOfTheirTransferFunction)
{
    for (const Case& filter : allCases()) {
        const Signal in = noiseSignal(2000, 21);
        const Signal out = FilterRig(filter).process(in);
        const std::vector<Real> expected = reference(filter, in);
        for (std::size_t n = 0; n < in.size(); ++n) {
            const Real bound = 1e-12L * (1 + std::fabs(expected[n]));
            ASSERT_LE(std::fabs(expected[n] - static_cast<Real>(out[n])), bound)
                << filter.name << " sample " << n;
        }
    }
}

TEST(FilterKernels, GiveTheSameBitsHoweverABlockIsSplit)
{
    for (const Case& filter : allCases()) {
        const Signal in = noiseSignal(3001, 22);
        const Signal whole = FilterRig(filter).process(in);
        for (unsigned seed = 1; seed <= 5; ++seed) {
            EXPECT_TRUE(isSameBits(FilterRig(filter).process(in, randomSplit(in.size(), seed)), whole))
                << filter.name << " split seed " << seed;
        }
        const std::vector<std::size_t> singles(in.size(), 1);
        EXPECT_TRUE(isSameBits(FilterRig(filter).process(in, singles), whole)) << filter.name;
    }
}

TEST(FilterKernels, GainFormsScaleTheOutputAndNotTheState)
{
    for (const Case& filter : allCases()) {
        const Signal in = noiseSignal(500, 23);
        FilterRig plain(filter);
        FilterRig gain(filter);
        const Signal expectedFirst = plain.process(in);
        const Signal expectedSecond = plain.process(in);
        const Signal first = gain.processWithGain(in, -0.3);
        for (std::size_t n = 0; n < in.size(); ++n) {
            ASSERT_EQ(first[n], expectedFirst[n] * -0.3) << filter.name;
        }
        EXPECT_TRUE(isSameBits(gain.process(in), expectedSecond)) << filter.name;
    }
}

TEST(FilterKernels, InitForgetsWhatWasHeard)
{
    for (const Case& filter : allCases()) {
        const Signal in = noiseSignal(301, 24);
        FilterRig rig(filter);
        const Signal fresh = rig.process(in);
        rig.init(filter.coefficients);
        EXPECT_TRUE(isSameBits(rig.process(in), fresh)) << filter.name;
    }
}

// One all-pass section with a coefficient that changes at `change`, with its whole past at hand.
std::vector<Real> changingSection(const std::vector<Real>& x, Real before, Real after, std::size_t change,
                                  std::size_t delay)
{
    std::vector<Real> y(x.size());
    for (std::size_t n = 0; n < x.size(); ++n) {
        const Real pastX = n < delay ? 0 : x[n - delay];
        const Real pastY = n < delay ? 0 : y[n - delay];
        y[n] = (x[n] - pastY) * (n < change ? before : after) + pastX;
    }
    return y;
}

void expectChangedOutput(const Case& filter, const Signal& after, const Signal& in,
                         const std::vector<Real>& expected)
{
    const std::size_t half = in.size() / 2;
    for (const bool isInPlace : {false, true}) {
        FilterRig rig(filter);
        Signal out = rig.process({in.begin(), in.begin() + static_cast<std::ptrdiff_t>(half)});
        rig.update(after, isInPlace);
        const Signal rest = rig.process({in.begin() + static_cast<std::ptrdiff_t>(half), in.end()});
        out.insert(out.end(), rest.begin(), rest.end());
        for (std::size_t n = 0; n < in.size(); ++n) {
            ASSERT_NEAR(out[n], static_cast<double>(expected[n]), 1e-12 * (1 + std::fabs(out[n])))
                << filter.name << " sample " << n;
        }
    }
}

TEST(FilterKernels, UpdateBringsNewCoefficientsIntoARunningAllPassChain)
{
    const Case filter = allPass();
    const Signal after = {0.2, 0.4, -0.5, 0.6, 0.8, 0.9};
    const Signal in = noiseSignal(202, 26);
    std::vector<Real> signal(in.begin(), in.end());
    for (std::size_t j = 0; j < after.size(); ++j) {
        signal = changingSection(signal, filter.coefficients[j], after[j], 101, 1);
    }
    expectChangedOutput(filter, after, in, signal);
}

TEST(FilterKernels, UpdateBringsNewCoefficientsIntoARunningHalfBand)
{
    for (std::size_t order = 2; order <= 16; order += 2) {
        const Case filter = halfBand(halfBandCoefficients(order));
        Signal after = filter.coefficients;
        for (double& coefficient : after) {
            coefficient *= 0.8;
        }
        const Signal in = noiseSignal(202, 27);
        std::vector<Real> a(in.begin(), in.end());
        std::vector<Real> b = a;
        for (std::size_t j = 0; j < order / 2; ++j) {
            a = changingSection(a, filter.coefficients[j], after[j], 101, 2);
            b = changingSection(b, filter.coefficients[order / 2 + j], after[order / 2 + j], 101, 2);
        }
        for (std::size_t n = 1; n < in.size(); ++n) {
            a[n] += b[n - 1];
        }
        expectChangedOutput(filter, after, in, a);
    }
}

TEST(FilterKernels, UpdateBringsNewCoefficientsIntoARunningBiquad)
{
    const Case filter = biquad("common", EFilterFamily::kBiquadCommon, {1, -1.25, 0.5}, -1.25, 0.5);
    const Signal after = {0.5, -0.25, 1.2, -0.7};
    const Signal in = noiseSignal(202, 28);
    std::vector<Real> w(in.size() + 2);
    std::vector<Real> expected(in.size());
    for (std::size_t n = 0; n < in.size(); ++n) {
        const Signal& c = n < 101 ? filter.coefficients : after;
        w[n + 2] = in[n] + c[2] * w[n + 1] + c[3] * w[n];
        expected[n] = w[n + 2] + c[0] * w[n + 1] + c[1] * w[n];
    }
    expectChangedOutput(filter, after, in, expected);
}

TEST(FilterKernels, UpdateOfAFirstOrderChainClearsItAndReadsItsSecondOperand)
{
    KernelRig rig;
    const CBufferRef state = rig.bytes(40);
    rig.run("fltlphp1u", 0, 0, {state, rig.buffer({0.25}), rig.buffer({0.75})});
    EXPECT_EQ(rig.read(state, 5), (Signal{0.25, 0, 0, 0, 0}));
}

} // namespace
} // namespace qel
