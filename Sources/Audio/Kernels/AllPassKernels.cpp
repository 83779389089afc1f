// A chain of six first-order all-pass sections, one half of a Hilbert pair.
#include "KernelFamilies.h"
#include "Unrolled.h"

#include <algorithm>

namespace qel {

namespace {

constexpr std::size_t kSections = 6;

// A section is y[n] = (x[n] - y[n-1]) a + x[n-1].
struct AllPassState
{
    double a[kSections];
    double x1[kSections];
    double y1[kSections];
};
static_assert(sizeof(AllPassState) == 144);

void init(const CKernelCall& call)
{
    AllPassState& state = *call.state<AllPassState>(0);
    state = {};
    std::copy_n(call.samples(1), kSections, state.a);
}

// The new state may be the running one.
void update(const CKernelCall& call)
{
    AllPassState& state = *call.state<AllPassState>(0);
    const AllPassState running = *call.state<AllPassState>(1);
    state = running;
    std::copy_n(call.samples(2), kSections, state.a);
}

template <bool kHasGain>
void run(const CKernelCall& call)
{
    double* out = call.samples(0);
    const double* in = call.samples(2);
    const double gain = call.scalar;
    AllPassState state = *call.state<AllPassState>(1);
    for (std::size_t i = 0; i < call.count; ++i) {
        double x = in[i];
        unrolled<kSections>([&](auto j) {
            const double y = (x - state.y1[j]) * state.a[j] + state.x1[j];
            state.x1[j] = x;
            state.y1[j] = y;
            x = y;
        });
        out[i] = kHasGain ? x * gain : x;
    }
    *call.state<AllPassState>(1) = state;
}

constexpr CKernelDef kTable[] = {
    {"fltapf1_6i", init, 2, 1},
    {"fltapf1_6u", update, 3, 1},
    {"fltapf1_6", run<false>, 3, 3},
    {"fltapf1_6g", run<true>, 3, 3},
};

} // namespace

std::span<const CKernelDef> allPassKernels()
{
    return kTable;
}

} // namespace qel
