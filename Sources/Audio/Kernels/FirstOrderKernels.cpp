// Chains of one to four equal one-pole low-passes or high-passes.
#include "KernelFamilies.h"
#include "Unrolled.h"

namespace qel {

namespace {

constexpr std::size_t kMaxStages = 4;

struct ChainState
{
    double k;
    double s[kMaxStages];
};
static_assert(sizeof(ChainState) == 40);

// Each stage follows its input with coefficient k; a low-pass passes on the follower, a high-pass what the
// follower leaves.
template <std::size_t kStages, bool kIsHighPass, bool kHasGain>
void run(const CKernelCall& call)
{
    double* out = call.samples(0);
    ChainState& state = *call.state<ChainState>(1);
    const double* in = call.samples(2);
    const double gain = call.scalar;
    const double k = state.k;
    double s[kStages];
    unrolled<kStages>([&](auto stage) { s[stage] = state.s[stage]; });
    for (std::size_t i = 0; i < call.count; ++i) {
        double x = in[i];
        unrolled<kStages>([&](auto stage) {
            s[stage] += (x - s[stage]) * k;
            x = kIsHighPass ? x - s[stage] : s[stage];
        });
        out[i] = kHasGain ? x * gain : x;
    }
    unrolled<kStages>([&](auto stage) { state.s[stage] = s[stage]; });
}

// Serves as init and as update: both clear the memory and take k from operand 1.
void init(const CKernelCall& call)
{
    *call.state<ChainState>(0) = {*call.samples(1), {}};
}

constexpr CKernelDef kTable[] = {
    {"fltlphp1i", init, 2, 1},
    {"fltlphp1u", init, 3, 1},
    {"fltlp1a", run<1, false, false>, 3, 3},
    {"fltlp1ag", run<1, false, true>, 3, 3},
    {"fltlp1b", run<2, false, false>, 3, 3},
    {"fltlp1bg", run<2, false, true>, 3, 3},
    {"fltlp1c", run<3, false, false>, 3, 3},
    {"fltlp1cg", run<3, false, true>, 3, 3},
    {"fltlp1d", run<4, false, false>, 3, 3},
    {"fltlp1dg", run<4, false, true>, 3, 3},
    {"flthp1a", run<1, true, false>, 3, 3},
    {"flthp1ag", run<1, true, true>, 3, 3},
    {"flthp1b", run<2, true, false>, 3, 3},
    {"flthp1bg", run<2, true, true>, 3, 3},
    {"flthp1c", run<3, true, false>, 3, 3},
    {"flthp1cg", run<3, true, true>, 3, 3},
    {"flthp1d", run<4, true, false>, 3, 3},
    {"flthp1dg", run<4, true, true>, 3, 3},
};

} // namespace

std::span<const CKernelDef> firstOrderKernels()
{
    return kTable;
}

} // namespace qel
