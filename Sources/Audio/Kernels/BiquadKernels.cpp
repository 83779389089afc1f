// Second-order sections in Direct Form II.
#include "KernelFamilies.h"

namespace qel {

namespace {

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
struct BiquadState
{
    BiquadCoefficients coefficients;
    double w1;
    double w2;
};
static_assert(sizeof(BiquadState) == 48);

using Coefficients = const BiquadCoefficients&;
constexpr auto kCommon = [](Coefficients c, double w, double w1, double w2) {
    return w + c.n1 * w1 + c.n2 * w2;
};
constexpr auto kLowPass = [](Coefficients, double w, double w1, double w2) { return w + 2 * w1 + w2; };
constexpr auto kHighPass = [](Coefficients, double w, double w1, double w2) { return w - 2 * w1 + w2; };
constexpr auto kBandPass = [](Coefficients, double w, double, double w2) { return w - w2; };
constexpr auto kNotch = [](Coefficients c, double w, double w1, double w2) { return w + c.n1 * w1 + w2; };

template <auto kNumerator, bool kHasGain>
void run(const CKernelCall& call)
{
    double* out = call.samples(0);
    BiquadState& state = *call.state<BiquadState>(1);
    const double* in = call.samples(2);
    const double gain = call.scalar;
    const BiquadCoefficients c = state.coefficients;
    double w1 = state.w1;
    double w2 = state.w2;
    for (std::size_t i = 0; i < call.count; ++i) {
        const double w = w1 * c.a1 + in[i] + c.a2 * w2;
        const double y = kNumerator(c, w, w1, w2);
        out[i] = kHasGain ? y * gain : y;
        w2 = w1;
        w1 = w;
    }
    state.w1 = w1;
    state.w2 = w2;
}

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

constexpr CKernelDef kTable[] = {
    {"fltbiqi", init, 2, 1},
    {"fltbiqu", update, 3, 1},
    {"fltbiqcommon", run<kCommon, false>, 3, 3},
    {"fltbiqcommong", run<kCommon, true>, 3, 3},
    {"fltbiqlp", run<kLowPass, false>, 3, 3},
    {"fltbiqlpg", run<kLowPass, true>, 3, 3},
    {"fltbiqhp", run<kHighPass, false>, 3, 3},
    {"fltbiqhpg", run<kHighPass, true>, 3, 3},
    {"fltbiqbp", run<kBandPass, false>, 3, 3},
    {"fltbiqbpg", run<kBandPass, true>, 3, 3},
    {"fltbiqnotch", run<kNotch, false>, 3, 3},
    {"fltbiqnotchg", run<kNotch, true>, 3, 3},
};

} // namespace

std::span<const CKernelDef> biquadKernels()
{
    return kTable;
}

} // namespace qel
