// Two-path polyphase all-pass half-band filters of order 2 to 16.
#include "KernelFamilies.h"
#include "Unrolled.h"

#include <cstdint>

namespace qel {

namespace {

// The two paths never meet before the output, so both run as one computation on pairs: [0] is path A, [1]
// path B. Each half follows the rules of a double, so the results are those of two separate paths.
using Pair [[gnu::vector_size(16)]] = double;

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

    static Pair section(Pair x, Pair x2, Pair y2, Pair c) { return (x - y2) * c + x2; }

    // Sample n needs nothing of sample n-1 but its path B, so two samples run side by side: they keep the
    // processor busy where one section after the other would have it wait.
    template <bool kHasGain>
    static void run(const CKernelCall& call)
    {
        double* out = call.samples(0);
        State& state = *call.state<State>(1);
        const double* in = call.samples(2);
        const double gain = call.scalar;
        const auto output = [gain](double y) { return kHasGain ? y * gain : y; };

        Pair c[kSections];
        Pair newer[kSections + 1]; // n-1
        Pair older[kSections + 1]; // n-2
        loadState(state, c, newer, older);
        double previousB = state.previousB;

        std::size_t i = 0;
        for (; i + 2 <= call.count; i += 2) {
            Pair even{in[i], in[i]};
            Pair odd{in[i + 1], in[i + 1]};
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
            out[i] = output(even[0] + previousB);
            out[i + 1] = output(odd[0] + even[1]);
            previousB = odd[1];
        }
        if (i < call.count) {
            Pair x{in[i], in[i]};
            unrolled<kSections>([&](auto j) {
                const Pair y = section(x, older[j], older[j + 1], c[j]);
                older[j] = newer[j];
                newer[j] = x;
                x = y;
            });
            older[kSections] = newer[kSections];
            newer[kSections] = x;
            out[i] = output(x[0] + previousB);
            previousB = x[1];
        }
        state.previousB = previousB;
        storeState(state, call.count, newer, older);
    }

    static void loadState(const State& state, Pair* c, Pair* newer, Pair* older)
    {
        for (std::size_t j = 0; j < kSections; ++j) {
            c[j] = load(state.coefficients[j]);
        }
        for (std::size_t j = 0; j <= kSections; ++j) {
            newer[j] = load(state.rings[j][(state.index + 1) & 3]);
            older[j] = load(state.rings[j][(state.index + 2) & 3]);
        }
    }

    // The index moves by 3 a sample, and only the last two samples are ever read again.
    static void storeState(State& state, std::uint32_t count, const Pair* newer, const Pair* older)
    {
        state.index = (state.index + 3 * std::int64_t{count}) & 3;
        for (std::size_t j = 0; j <= kSections; ++j) {
            state.rings[j][(state.index + 1) & 3] = store(newer[j]);
            state.rings[j][(state.index + 2) & 3] = store(older[j]);
        }
    }
};

constexpr CKernelDef kTable[] = {
    {"flthbf2i", HalfBand<1>::init, 2, 1},       {"flthbf2u", HalfBand<1>::update, 3, 1},
    {"flthbf2", HalfBand<1>::run<false>, 3, 3},  {"flthbf2g", HalfBand<1>::run<true>, 3, 3},
    {"flthbf4i", HalfBand<2>::init, 2, 1},       {"flthbf4u", HalfBand<2>::update, 3, 1},
    {"flthbf4", HalfBand<2>::run<false>, 3, 3},  {"flthbf4g", HalfBand<2>::run<true>, 3, 3},
    {"flthbf6i", HalfBand<3>::init, 2, 1},       {"flthbf6u", HalfBand<3>::update, 3, 1},
    {"flthbf6", HalfBand<3>::run<false>, 3, 3},  {"flthbf6g", HalfBand<3>::run<true>, 3, 3},
    {"flthbf8i", HalfBand<4>::init, 2, 1},       {"flthbf8u", HalfBand<4>::update, 3, 1},
    {"flthbf8", HalfBand<4>::run<false>, 3, 3},  {"flthbf8g", HalfBand<4>::run<true>, 3, 3},
    {"flthbf10i", HalfBand<5>::init, 2, 1},      {"flthbf10u", HalfBand<5>::update, 3, 1},
    {"flthbf10", HalfBand<5>::run<false>, 3, 3}, {"flthbf10g", HalfBand<5>::run<true>, 3, 3},
    {"flthbf12i", HalfBand<6>::init, 2, 1},      {"flthbf12u", HalfBand<6>::update, 3, 1},
    {"flthbf12", HalfBand<6>::run<false>, 3, 3}, {"flthbf12g", HalfBand<6>::run<true>, 3, 3},
    {"flthbf14i", HalfBand<7>::init, 2, 1},      {"flthbf14u", HalfBand<7>::update, 3, 1},
    {"flthbf14", HalfBand<7>::run<false>, 3, 3}, {"flthbf14g", HalfBand<7>::run<true>, 3, 3},
    {"flthbf16i", HalfBand<8>::init, 2, 1},      {"flthbf16u", HalfBand<8>::update, 3, 1},
    {"flthbf16", HalfBand<8>::run<false>, 3, 3}, {"flthbf16g", HalfBand<8>::run<true>, 3, 3},
};

} // namespace

std::span<const CKernelDef> halfBandKernels()
{
    return kTable;
}

} // namespace qel
