// A second-order section whose effect falls off with its own level.
#include "KernelFamilies.h"

namespace qel {

namespace {

// The section runs as a biquad in Direct Form II; how much of it is heard follows from the square x of its
// memory: 1 - 24 / (x (x (x (3 + x) + 6) + 12) + 24) is 0 at rest and nears 1 with the level, and moves the
// output from the filter back to the input. No filter of the product is made of it.
struct EqualizerState
{
    double n1;
    double n2;
    double a1;
    double a2;
    double w1;
    double w2;
    double reserve[14];
};
static_assert(sizeof(EqualizerState) == 160);

double bend(double x)
{
    return 1.0 - 24.0 / (x * (x * (x * (3.0 + x) + 6.0) + 12.0) + 24.0);
}

void init(const CKernelCall& call)
{
    const double* coefficients = call.samples(1);
    *call.state<EqualizerState>(0) = {
        coefficients[0], coefficients[1], coefficients[2], coefficients[3], 0.0, 0.0, {}};
}

// The new state may be the running one.
void update(const CKernelCall& call)
{
    const EqualizerState running = *call.state<EqualizerState>(1);
    const double* coefficients = call.samples(2);
    *call.state<EqualizerState>(0) = {
        coefficients[0], coefficients[1], coefficients[2], coefficients[3], running.w1, running.w2, {}};
}

void run(const CKernelCall& call)
{
    double* out = call.samples(0);
    EqualizerState& state = *call.state<EqualizerState>(1);
    const double* in = call.samples(2);
    const auto [n1, n2, a1, a2, oldW1, oldW2, reserve] = state;
    double w1 = oldW1;
    double w2 = oldW2;
    for (std::size_t i = 0; i < call.count; ++i) {
        const double x = in[i];
        const double w = w1 * a1 + x + a2 * w2;
        const double filtered = w + n1 * w1 + n2 * w2;
        out[i] = filtered + (x - filtered) * bend(w1 * w1);
        w2 = w1;
        w1 = w;
    }
    state.w1 = w1;
    state.w2 = w2;
}

constexpr CKernelDef kTable[] = {
    {"fltheqi", init, 2, 1},
    {"flthequ", update, 3, 1},
    {"fltheq", run, 3, 3},
};

} // namespace

std::span<const CKernelDef> equalizerKernels()
{
    return kTable;
}

} // namespace qel
