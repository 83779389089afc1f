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

constexpr CKernelPart kCrossover[] = {{runSection<LowPass>, CKernelPart::kInput},
                                      {runSection<LowPass>, 0},
                                      {runSection<HighPass>, CKernelPart::kInput},
                                      {runSection<HighPass>, 2}};
constexpr CKernelJoin kLowPassJoins[] = {
    {kCrossover, crossOver<double>, crossOver<SamplePair>},
    ChainOf<LowPass, LowPass>::kJoin,
};
constexpr CKernelJoin kHighPassJoins[] = {
    ChainOf<HighPass, HighPass, HighPass>::kJoin,
    ChainOf<HighPass, HighPass>::kJoin,
};

template <class Numerator, bool kHasGain>
constexpr CKernelDef row(const char* name, std::span<const CKernelJoin> joins = {})
{
    using Section = BiquadSection<Numerator, kHasGain>;
    return {name, runSection<Section>, 3, 3, runSections<SamplePair, Section>, joins};
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
