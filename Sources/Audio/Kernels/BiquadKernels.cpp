// Second-order sections in Direct Form II.
#include "FilterSections.h"
#include "KernelFamilies.h"

namespace qel {

namespace {

void init(const CKernelCall& call)
{
    *call.state<BiquadState>(0) = {*call.state<BiquadCoefficients>(1), 0, 0};
}

// The new state may be the running one.
void update(const CKernelCall& call)
{
    const BiquadState running = *call.state<BiquadState>(1);
    *call.state<BiquadState>(0) = {*call.state<BiquadCoefficients>(2), running.w1, running.w2};
}

using LowPass = BiquadSection<LowPassNumerator, true>;
using HighPass = BiquadSection<HighPassNumerator, true>;

// Both bands of a crossover of fourth order from one reading of its input.
template <class Sample>
void crossOver(const CKernelCall* calls)
{
    constexpr std::size_t kParts = 4;
    const LaneCalls lowCalls{calls, kParts};
    const LaneCalls highCalls{calls + 2, kParts};
    const LaneInput<Sample> in(lowCalls, kSectionInput);
    const LaneOutput<Sample> low({calls + 1, kParts}, kSectionOutput);
    const LaneOutput<Sample> high({calls + 3, kParts}, kSectionOutput);
    SectionChain<Sample, LowPass, LowPass> lowChain(lowCalls);
    SectionChain<Sample, HighPass, HighPass> highChain(highCalls);
    const std::size_t count = calls->count;
    for (std::size_t i = 0; i < count; ++i) {
        const Sample x = in[i];
        low.set(i, lowChain.next(x));
        high.set(i, highChain.next(x));
    }
    lowChain.store(lowCalls);
    highChain.store(highCalls);
}

#if QEL_HAS_WIDE_LANES

// Both bands of both channels in one register.
[[gnu::target("avx2")]] void crossOverWide(const CKernelCall* calls)
{
    constexpr std::size_t kSections = 2;
    const CKernelCall* const lanes[] = {calls, calls + 4, calls + 2, calls + 6}; // low, low, high, high
    SampleQuad a1[kSections], a2[kSections], w1[kSections], w2[kSections], gain[kSections];
    for (std::size_t section = 0; section < kSections; ++section) {
        const BiquadState* states[4];
        for (std::size_t lane = 0; lane < 4; ++lane) {
            states[lane] = lanes[lane][section].state<BiquadState>(kSectionState);
        }
        const auto& [s0, s1, s2, s3] = states;
        a1[section] = SampleQuad{s0->a1, s1->a1, s2->a1, s3->a1};
        a2[section] = SampleQuad{s0->a2, s1->a2, s2->a2, s3->a2};
        w1[section] = SampleQuad{s0->w1, s1->w1, s2->w1, s3->w1};
        w2[section] = SampleQuad{s0->w2, s1->w2, s2->w2, s3->w2};
        gain[section] = SampleQuad{lanes[0][section].scalar, lanes[1][section].scalar,
                                   lanes[2][section].scalar, lanes[3][section].scalar};
    }
    const SampleQuad middle{2.0, 2.0, -2.0, -2.0}; // of the numerators
    const double* const in0 = lanes[0][0].samples(kSectionInput);
    const double* const in1 = lanes[1][0].samples(kSectionInput);
    double* const low0 = lanes[0][1].samples(kSectionOutput);
    double* const low1 = lanes[1][1].samples(kSectionOutput);
    double* const high0 = lanes[2][1].samples(kSectionOutput);
    double* const high1 = lanes[3][1].samples(kSectionOutput);
    const std::size_t count = calls->count;
    for (std::size_t i = 0; i < count; ++i) {
        SampleQuad x{in0[i], in1[i], in0[i], in1[i]};
#pragma GCC unroll 2
        for (std::size_t section = 0; section < kSections; ++section) {
            const SampleQuad w = w1[section] * a1[section] + x + a2[section] * w2[section];
            x = (w + middle * w1[section] + w2[section]) * gain[section];
            w2[section] = w1[section];
            w1[section] = w;
        }
        low0[i] = x[0];
        low1[i] = x[1];
        high0[i] = x[2];
        high1[i] = x[3];
    }
    for (std::size_t section = 0; section < kSections; ++section) {
        for (std::size_t lane = 0; lane < 4; ++lane) {
            BiquadState& state = *lanes[lane][section].state<BiquadState>(kSectionState);
            state.w1 = w1[section][lane];
            state.w2 = w2[section][lane];
        }
    }
}

#endif

void crossOverPair(const CKernelCall* calls)
{
#if QEL_HAS_WIDE_LANES
    if (hasWideLanes()) {
        return crossOverWide(calls);
    }
#endif
    crossOver<SamplePair>(calls);
}

constexpr CKernelPart kCrossover[] = {{runSection<LowPass>, CKernelPart::kInput},
                                      {runSection<LowPass>, 0},
                                      {runSection<HighPass>, CKernelPart::kInput},
                                      {runSection<HighPass>, 2}};
constexpr CKernelJoin kLowPassJoins[] = {
    {kCrossover, crossOver<double>, crossOverPair, nullptr},
    ChainOf<LowPass, LowPass>::kJoin,
};
constexpr CKernelJoin kHighPassJoins[] = {
    ChainOf<HighPass, HighPass, HighPass>::kJoin,
    ChainOf<HighPass, HighPass>::kJoin,
};

template <class Numerator, bool kHasGain>
constexpr CKernelDef row(const char* name, std::span<const CKernelJoin> joins = {})
{
    return sectionKernel<BiquadSection<Numerator, kHasGain>>(name, joins);
}

constexpr CKernelDef kTable[] = {
    {"fltbiqi", init, 2, 1},
    {"fltbiqu", update, 3, 1},
    row<CommonNumerator, false>("fltbiqcommon"),
    row<CommonNumerator, true>("fltbiqcommong"),
    row<LowPassNumerator, false>("fltbiqlp"),
    row<LowPassNumerator, true>("fltbiqlpg", kLowPassJoins),
    row<HighPassNumerator, false>("fltbiqhp"),
    row<HighPassNumerator, true>("fltbiqhpg", kHighPassJoins),
    row<BandPassNumerator, false>("fltbiqbp"),
    row<BandPassNumerator, true>("fltbiqbpg"),
    row<NotchNumerator, false>("fltbiqnotch"),
    row<NotchNumerator, true>("fltbiqnotchg"),
};

} // namespace

std::span<const CKernelDef> biquadKernels()
{
    return kTable;
}

} // namespace qel
