// Two-path polyphase all-pass half-band filters of order 2 to 16.
#include "KernelFamilies.h"
#include "RateChange.h"
#include "SampleLanes.h"
#include "Unrolled.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace qel {

namespace {

// The two paths never meet before the output, so both run as one computation on pairs: [0] is path A, [1]
// path B.
using Pair = SamplePair;

// A pair at rest: a state need not be aligned for vectors.
struct StoredPair
{
    double a;
    double b;
};
Pair load(const StoredPair& stored)
{
    return Pair{stored.a, stored.b};
}
StoredPair store(Pair pair)
{
    return {pair[0], pair[1]};
}

// Half the order is the number of sections in each path: order 2 has one section a path.
//
// Each section is y[n] = (x[n] - y[n-2]) c + x[n-2]; as the sections of a path are in series, one ring keeps
// a section's output and the next one's input, and ring 0 the filter's input. A ring's slot `index` takes the
// next sample, index + 1 holds the one before, index + 2 the one before that (modulo 4).
template <std::size_t kSections>
struct HalfBandState
{
    static constexpr std::int64_t kFirstIndex = 3;

    std::int64_t index;
    double previousB; // path B's output of the sample before
    StoredPair coefficients[kSections];
    StoredPair rings[kSections + 1][4];
};
static_assert(sizeof(HalfBandState<1>) == 160 && sizeof(HalfBandState<8>) == 720);

template <std::size_t kSections>
struct HalfBand
{
    using State = HalfBandState<kSections>;

    // The coefficient block is a[1..], then b[1..].
    static void setCoefficients(State& state, const double* block)
    {
        for (std::size_t j = 0; j < kSections; ++j) {
            state.coefficients[j] = {block[j], block[kSections + j]};
        }
    }

    static void init(const CKernelCall& call)
    {
        State& state = *call.state<State>(0);
        state = {};
        state.index = State::kFirstIndex;
        setCoefficients(state, call.samples(1));
    }

    // The new state may be the running one.
    static void update(const CKernelCall& call)
    {
        State& state = *call.state<State>(0);
        const State running = *call.state<State>(1);
        state = running;
        setCoefficients(state, call.samples(2));
    }

    static Pair twice(double x) { return Pair{x, x}; }
    static Pair section(Pair x, Pair x2, Pair y2, Pair c) { return (x - y2) * c + x2; }

    static State& stateOf(const CKernelCall& call) { return *call.state<State>(1); }

    // Memory of the sections between samples.
    struct Memory
    {
        Pair newer[kSections + 1]; // n-1
        Pair older[kSections + 1]; // n-2
    };

    template <bool kHasGain>
    static void run(const CKernelCall& call)
    {
        const double* in = call.samples(2);
        double* out = call.samples(0);
        const double gain = call.scalar;
        filter(
            stateOf(call), call.count, [&](std::size_t i) { return in[i]; },
            [&](std::size_t i, double y) { out[i] = kHasGain ? y * gain : y; });
    }

    // Sample n needs nothing of sample n-1 but its path B, so two samples run side by side: they keep the
    // processor busy where one section after the other would have it wait.
    template <class Input, class Output>
    [[gnu::always_inline]] static void filter(State& state, std::uint32_t count, Input in, Output out)
    {
        Pair c[kSections];
        Memory memory;
        loadState(state, c, memory);
        auto& newer = memory.newer;
        auto& older = memory.older;
        double previousB = state.previousB;

        std::size_t i = 0;
        for (; i + 2 <= count; i += 2) {
            Pair even = twice(in(i));
            Pair odd = twice(in(i + 1));
            unrolled<kSections>([&](auto j) {
                const Pair evenOut = section(even, older[j], older[j + 1], c[j]);
                const Pair oddOut = section(odd, newer[j], newer[j + 1], c[j]);
                older[j] = even;
                newer[j] = odd;
                even = evenOut;
                odd = oddOut;
            });
            older[kSections] = even;
            newer[kSections] = odd;
            out(i, even[0] + previousB);
            out(i + 1, odd[0] + even[1]);
            previousB = odd[1];
        }
        if (i < count) {
            Pair x = twice(in(i));
            unrolled<kSections>([&](auto j) {
                const Pair y = section(x, older[j], older[j + 1], c[j]);
                older[j] = newer[j];
                newer[j] = x;
                x = y;
            });
            older[kSections] = newer[kSections];
            newer[kSections] = x;
            out(i, x[0] + previousB);
            previousB = x[1];
        }
        state.previousB = previousB;
        storeState(state, count, memory);
    }

    [[gnu::always_inline]] static void loadState(const State& state, Pair* c, Memory& memory)
    {
        unrolled<kSections>([&](auto j) { c[j] = load(state.coefficients[j]); });
        unrolled<kSections + 1>([&](auto j) {
            memory.newer[j] = load(state.rings[j][(state.index + 1) & 3]);
            memory.older[j] = load(state.rings[j][(state.index + 2) & 3]);
        });
    }

    // The index moves by 3 a sample, and only the last two samples are ever read again.
    [[gnu::always_inline]] static void storeState(State& state, std::uint32_t count, const Memory& memory)
    {
        state.index = (state.index + 3 * std::int64_t{count}) & 3;
        unrolled<kSections + 1>([&](auto j) {
            state.rings[j][(state.index + 1) & 3] = store(memory.newer[j]);
            state.rings[j][(state.index + 2) & 3] = store(memory.older[j]);
        });
    }

    // --- joined with a change of rate
    //
    // Samples n and n-1 share no memory in a section, so each path falls into two filters, one for every
    // other sample. Between the rates half of these have nothing to do: behind an interpolator they only see
    // zeros, in front of a decimator nobody hears them.

    // Every other sample of both paths.
    struct Phase
    {
        Pair c[kSections];
        Pair memory[kSections + 1];

        [[gnu::always_inline]] Pair next(Pair x)
        {
            unrolled<kSections>([&](auto j) {
                const Pair y = section(x, memory[j], memory[j + 1], c[j]);
                memory[j] = x;
                x = y;
            });
            memory[kSections] = x;
            return x;
        }
    };

    // Calls of a channel: interpolator (output, input), filter (output, state, input).
    template <std::size_t kChannels>
    static void filterInterpolated(const CKernelCall* calls)
    {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            if (!isSilentBetween(stateOf(calls[2 * channel + 1]))) {
                return eachAlone<kChannels>(calls, filterWithZeros);
            }
        }
        Phase phases[kChannels];
        const double* in[kChannels];
        double* out[kChannels];
        double gain[kChannels];
        unrolled<kChannels>([&](auto channel) {
            const CKernelCall& filterCall = calls[2 * channel + 1];
            in[channel] = calls[2 * channel].samples(1);
            out[channel] = filterCall.samples(0);
            gain[channel] = filterCall.scalar;
            Memory memory;
            loadState(stateOf(filterCall), phases[channel].c, memory);
            unrolled<kSections + 1>([&](auto j) { phases[channel].memory[j] = memory.older[j]; });
        });
        const std::uint32_t count = calls->count;
        for (std::size_t i = 0; i < count; ++i) {
            unrolled<kChannels>([&](auto channel) {
                const Pair y = phases[channel].next(twice(2 * in[channel][i]));
                // Each path meets the other's zero.
                storeSamples(out[channel] + 2 * i, (y + 0.0) * gain[channel]);
            });
        }
        unrolled<kChannels>([&](auto channel) {
            Memory memory{};
            unrolled<kSections + 1>([&](auto j) { memory.older[j] = phases[channel].memory[j]; });
            storeState(stateOf(calls[2 * channel + 1]), 2 * count, memory);
        });
    }

    // Calls of a channel: filter (output, state, input), decimator (output, input).
    template <std::size_t kChannels>
    static void filterDecimated(const CKernelCall* calls)
    {
        const std::uint32_t count = calls[1].count;
        if (calls->count != 2 * count) {
            return eachAlone<kChannels>(calls, filterAndDrop);
        }
        Phase phases[kChannels];
        Memory memories[kChannels];
        const double* in[kChannels];
        double* out[kChannels];
        double gain[kChannels];
        double previousB[kChannels];
        unrolled<kChannels>([&](auto channel) {
            const CKernelCall& filterCall = calls[2 * channel];
            const State& state = stateOf(filterCall);
            in[channel] = filterCall.samples(2);
            out[channel] = calls[2 * channel + 1].samples(0);
            gain[channel] = filterCall.scalar;
            previousB[channel] = state.previousB;
            loadState(state, phases[channel].c, memories[channel]);
            unrolled<kSections + 1>([&](auto j) {
                phases[channel].memory[j] =
                    Pair{memories[channel].older[j][0], memories[channel].newer[j][1]};
            });
        });
        for (std::size_t i = 0; i < count; ++i) {
            unrolled<kChannels>([&](auto channel) {
                const Pair y = phases[channel].next(loadSamples<Pair>(in[channel] + 2 * i));
                out[channel][i] = (y[0] + previousB[channel]) * gain[channel];
                previousB[channel] = y[1];
            });
        }
        unrolled<kChannels>([&](auto channel) {
            State& state = stateOf(calls[2 * channel]);
            unrolled<kSections + 1>([&](auto j) {
                memories[channel].older[j][0] = phases[channel].memory[j][0];
                memories[channel].newer[j][1] = phases[channel].memory[j][1];
            });
            state.previousB = previousB[channel];
            storeState(state, 2 * count, memories[channel]);
        });
    }

    template <std::size_t kChannels>
    static void eachAlone(const CKernelCall* calls, CKernelGroupFunction function)
    {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            function(calls + 2 * channel);
        }
    }

    // Whether nothing is left of the samples that stand where the interpolator puts zeros.
    static bool isSilentBetween(const State& state)
    {
        constexpr StoredPair kZero{};
        const std::int64_t slot = (state.index + 1) & 3;
        bool isSilent = std::memcmp(&state.previousB, &kZero.a, sizeof(double)) == 0;
        for (const auto& ring : state.rings) {
            isSilent = isSilent && std::memcmp(&ring[slot], &kZero, sizeof kZero) == 0;
        }
        return isSilent;
    }
    static void filterWithZeros(const CKernelCall* calls)
    {
        const double* in = calls[0].samples(1);
        double* out = calls[1].samples(0);
        const double gain = calls[1].scalar;
        filter(
            stateOf(calls[1]), calls[1].count,
            [&](std::size_t i) { return i % 2 == 0 ? 2 * in[i / 2] : 0.0; },
            [&](std::size_t i, double y) { out[i] = y * gain; });
    }
    static void filterAndDrop(const CKernelCall* calls)
    {
        const double* in = calls[0].samples(2);
        double* out = calls[1].samples(0);
        const double gain = calls[0].scalar;
        filter(
            stateOf(calls[0]), calls[0].count, [&](std::size_t i) { return in[i]; },
            [&](std::size_t i, double y) {
                if (i % 2 == 0) {
                    out[i / 2] = y * gain;
                }
            });
    }

    static constexpr CKernelPart kInterpolated[] = {{interpolate, CKernelPart::kInput}, {run<true>, 0}};
    static constexpr CKernelPart kDecimated[] = {{run<true>, CKernelPart::kInput}, {decimate, 0}};
    static constexpr CKernelJoin kInterpolatorJoin{kInterpolated, filterInterpolated<1>,
                                                   filterInterpolated<2>, nullptr};
    static constexpr CKernelJoin kDecimatorJoins[] = {
        {kDecimated, filterDecimated<1>, filterDecimated<2>, nullptr}};
};

constexpr CKernelDef kTable[] = {
    {"flthbf2i", HalfBand<1>::init, 2, 1},
    {"flthbf2u", HalfBand<1>::update, 3, 1},
    {"flthbf2", HalfBand<1>::run<false>, 3, 3},
    {"flthbf2g", HalfBand<1>::run<true>, 3, 3, nullptr, nullptr, HalfBand<1>::kDecimatorJoins},
    {"flthbf4i", HalfBand<2>::init, 2, 1},
    {"flthbf4u", HalfBand<2>::update, 3, 1},
    {"flthbf4", HalfBand<2>::run<false>, 3, 3},
    {"flthbf4g", HalfBand<2>::run<true>, 3, 3, nullptr, nullptr, HalfBand<2>::kDecimatorJoins},
    {"flthbf6i", HalfBand<3>::init, 2, 1},
    {"flthbf6u", HalfBand<3>::update, 3, 1},
    {"flthbf6", HalfBand<3>::run<false>, 3, 3},
    {"flthbf6g", HalfBand<3>::run<true>, 3, 3, nullptr, nullptr, HalfBand<3>::kDecimatorJoins},
    {"flthbf8i", HalfBand<4>::init, 2, 1},
    {"flthbf8u", HalfBand<4>::update, 3, 1},
    {"flthbf8", HalfBand<4>::run<false>, 3, 3},
    {"flthbf8g", HalfBand<4>::run<true>, 3, 3, nullptr, nullptr, HalfBand<4>::kDecimatorJoins},
    {"flthbf10i", HalfBand<5>::init, 2, 1},
    {"flthbf10u", HalfBand<5>::update, 3, 1},
    {"flthbf10", HalfBand<5>::run<false>, 3, 3},
    {"flthbf10g", HalfBand<5>::run<true>, 3, 3, nullptr, nullptr, HalfBand<5>::kDecimatorJoins},
    {"flthbf12i", HalfBand<6>::init, 2, 1},
    {"flthbf12u", HalfBand<6>::update, 3, 1},
    {"flthbf12", HalfBand<6>::run<false>, 3, 3},
    {"flthbf12g", HalfBand<6>::run<true>, 3, 3, nullptr, nullptr, HalfBand<6>::kDecimatorJoins},
    {"flthbf14i", HalfBand<7>::init, 2, 1},
    {"flthbf14u", HalfBand<7>::update, 3, 1},
    {"flthbf14", HalfBand<7>::run<false>, 3, 3},
    {"flthbf14g", HalfBand<7>::run<true>, 3, 3, nullptr, nullptr, HalfBand<7>::kDecimatorJoins},
    {"flthbf16i", HalfBand<8>::init, 2, 1},
    {"flthbf16u", HalfBand<8>::update, 3, 1},
    {"flthbf16", HalfBand<8>::run<false>, 3, 3},
    {"flthbf16g", HalfBand<8>::run<true>, 3, 3, nullptr, nullptr, HalfBand<8>::kDecimatorJoins},
};

} // namespace

std::span<const CKernelJoin> interpolatorJoins()
{
    static constexpr auto kJoins = []<std::size_t... kIndex>(std::index_sequence<kIndex...>)
    {
        return std::array{HalfBand<kIndex + 1>::kInterpolatorJoin...};
    }
    (std::make_index_sequence<8>{});
    return kJoins;
}

std::span<const CKernelDef> halfBandKernels()
{
    return kTable;
}

} // namespace qel
