// Filter sections of first and second order, for one channel, two or four, alone or in a chain.
#pragma once

#include "WideLanes.h"

#include <array>
#include <tuple>
#include <utility>

namespace qel {

// Operands of all kernels that run a section: output, state, input; the scalar is a gain.
enum : std::size_t
{
    kSectionOutput,
    kSectionState,
    kSectionInput
};

// --- second order, Direct Form II

// w[n] = x[n] + a1 w[n-1] + a2 w[n-2], the feedback signs folded into the coefficients; b0 is 1 and the
// output gain makes up for it. The coefficient block is n1, n2, a1, a2; the numerators that are fixed do not
// read n1, n2.
struct BiquadCoefficients
{
    double n1;
    double n2;
    double a1;
    double a2;
};
struct BiquadState : BiquadCoefficients
{
    double w1;
    double w2;
};
static_assert(sizeof(BiquadState) == 48);

struct CommonNumerator
{
    static auto apply(auto n1, auto n2, auto w, auto w1, auto w2) { return w + n1 * w1 + n2 * w2; }
};
struct LowPassNumerator
{
    static auto apply(auto, auto, auto w, auto w1, auto w2) { return w + 2.0 * w1 + w2; }
};
struct HighPassNumerator
{
    static auto apply(auto, auto, auto w, auto w1, auto w2) { return w - 2.0 * w1 + w2; }
};
struct BandPassNumerator
{
    static auto apply(auto, auto, auto w, auto, auto w2) { return w - w2; }
};
struct NotchNumerator
{
    static auto apply(auto n1, auto, auto w, auto w1, auto w2) { return w + n1 * w1 + w2; }
};

template <class Numerator, bool kHasGain>
struct BiquadSection
{
    // State in registers, from the first sample of a call to its last.
    template <class Sample>
    class Run
    {
    public:
        [[gnu::always_inline]] explicit Run(const LaneCalls& calls)
            : n1_(calls.load<Sample>(kSectionState, &BiquadState::n1)),
              n2_(calls.load<Sample>(kSectionState, &BiquadState::n2)),
              a1_(calls.load<Sample>(kSectionState, &BiquadState::a1)),
              a2_(calls.load<Sample>(kSectionState, &BiquadState::a2)), gain_(calls.scalars<Sample>()),
              w1_(calls.load<Sample>(kSectionState, &BiquadState::w1)),
              w2_(calls.load<Sample>(kSectionState, &BiquadState::w2))
        {}
        [[gnu::always_inline]] Sample next(Sample x)
        {
            const Sample w = w1_ * a1_ + x + a2_ * w2_;
            const Sample y = Numerator::apply(n1_, n2_, w, w1_, w2_);
            w2_ = w1_;
            w1_ = w;
            return kHasGain ? y * gain_ : y;
        }
        [[gnu::always_inline]] void store(const LaneCalls& calls) const
        {
            calls.store(kSectionState, &BiquadState::w1, w1_);
            calls.store(kSectionState, &BiquadState::w2, w2_);
        }

    private:
        const Sample n1_, n2_, a1_, a2_;
        const Sample gain_;
        Sample w1_, w2_;
    };
};

// --- first order, one to four equal stages

struct FirstOrderState
{
    static constexpr std::size_t kMaxStages = 4;

    double k;
    double s[kMaxStages];
};
static_assert(sizeof(FirstOrderState) == 40);

// Each stage follows its input with coefficient k; a low-pass passes on the follower, a high-pass what the
// follower leaves.
template <std::size_t kStages, bool kIsHighPass, bool kHasGain>
struct FirstOrderSection
{
    template <class Sample>
    class Run
    {
    public:
        [[gnu::always_inline]] explicit Run(const LaneCalls& calls)
            : k_(calls.load<Sample>(kSectionState, &FirstOrderState::k)), gain_(calls.scalars<Sample>())
        {
            unrolled<kStages>([&](auto stage) {
                s_[stage] =
                    gatherLanes<Sample>([&](std::size_t lane) { return stateOf(calls[lane]).s[stage]; });
            });
        }
        [[gnu::always_inline]] Sample next(Sample x)
        {
            unrolled<kStages>([&](auto stage) {
                s_[stage] += (x - s_[stage]) * k_;
                x = kIsHighPass ? x - s_[stage] : s_[stage];
            });
            return kHasGain ? x * gain_ : x;
        }
        [[gnu::always_inline]] void store(const LaneCalls& calls) const
        {
            unrolled<kStages>([&](auto stage) {
                scatterLanes(s_[stage],
                             [&](std::size_t lane, double part) { stateOf(calls[lane]).s[stage] = part; });
            });
        }

    private:
        static FirstOrderState& stateOf(const CKernelCall& call)
        {
            return *call.state<FirstOrderState>(kSectionState);
        }

        const Sample k_;
        const Sample gain_;
        Sample s_[kStages];
    };
};

// --- kernels

// The sections in a row, each the call of its place.
template <class Sample, class... Sections>
class SectionChain
{
public:
    [[gnu::always_inline]] explicit SectionChain(const LaneCalls& calls) : SectionChain(calls, kIndices) {}

    [[gnu::always_inline]] Sample next(Sample x)
    {
        unrolled<sizeof...(Sections)>([&](auto part) { x = std::get<part>(runs_).next(x); });
        return x;
    }
    [[gnu::always_inline]] void store(const LaneCalls& calls) const
    {
        unrolled<sizeof...(Sections)>([&](auto part) {
            std::get<part>(runs_).store({calls.calls + part, calls.stride});
        });
    }

private:
    static constexpr std::index_sequence_for<Sections...> kIndices{};

    template <std::size_t... kPart>
    [[gnu::always_inline]] SectionChain(const LaneCalls& calls, std::index_sequence<kPart...>)
        : runs_(typename Sections::template Run<Sample>({calls.calls + kPart, calls.stride})...)
    {}

    std::tuple<typename Sections::template Run<Sample>...> runs_;
};

template <class Sample, class... Sections>
void runSections(const CKernelCall* calls)
{
    constexpr std::size_t kParts = sizeof...(Sections);
    const LaneCalls first{calls, kParts};
    const LaneInput<Sample> in(first, kSectionInput);
    const LaneOutput<Sample> out({calls + kParts - 1, kParts}, kSectionOutput);
    SectionChain<Sample, Sections...> chain(first);
    const std::size_t count = calls->count;
    for (std::size_t i = 0; i < count; ++i) {
        out.set(i, chain.next(in[i]));
    }
    chain.store(first);
}

// The kernel of one section.
template <class Section>
void runSection(const CKernelCall& call)
{
    runSections<double, Section>(&call);
}

// The row of one section in its table.
template <class Section>
constexpr CKernelDef sectionKernel(const char* name, std::span<const CKernelJoin> joins = {})
{
    return {name,
            runSection<Section>,
            3,
            3,
            runSections<SamplePair, Section>,
            kWide<&runSections<SampleQuad, Section>>,
            joins};
}

// The parts of a chain, and the chain.
template <class... Sections>
struct ChainOf
{
    static constexpr auto kParts = [] {
        std::array<CKernelPart, sizeof...(Sections)> parts{CKernelPart{runSection<Sections>, 0}...};
        for (std::size_t i = 0; i < parts.size(); ++i) {
            parts[i].source = static_cast<int>(i) - 1;
        }
        return parts;
    }();
    static constexpr CKernelJoin kJoin{kParts, runSections<double, Sections...>,
                                       runSections<SamplePair, Sections...>,
                                       kWide<&runSections<SampleQuad, Sections...>>};
};

} // namespace qel
