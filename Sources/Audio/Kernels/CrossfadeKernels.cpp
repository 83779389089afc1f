// Raised-cosine crossfade, driven by a two-multiply oscillator.
#include "KernelFamilies.h"
#include "KernelMath.h"
#include "WideLanes.h"

namespace qel {

namespace {

// Half the cosine of the fade's angle, which runs over half a turn.
struct FadeState
{
    double current;
    double previous;
    double twoCos; // of the angle moved in one sample
};

// The count is the fade's length, the scalar its direction: 0 begins on operand 3 of `xfade` and ends on
// operand 2, 0.5 the other way round.
void xfadeInit(const CKernelCall& call)
{
    if (call.count == 0) {
        return;
    }
    const double step = kernelmath::kPi / call.count;
    const double start = kernelmath::kPi * (2 * call.scalar + 0.5);
    *call.state<FadeState>(0) = {0.5 * kernelmath::sin(start), 0.5 * kernelmath::sin(start - step),
                                 2 * kernelmath::cos(step)};
}

void xfade(const CKernelCall& call)
{
    double* out = call.samples(0);
    FadeState& state = *call.state<FadeState>(1);
    const double* in2 = call.samples(2);
    const double* in3 = call.samples(3);
    auto [current, previous, twoCos] = state;
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] = (0.5 - current) * in2[i] + (0.5 + current) * in3[i];
        const double next = current * twoCos - previous;
        previous = current;
        current = next;
    }
    state.current = current;
    state.previous = previous;
}

// The fade's place at each sample, for any number of signals that are faded alike.
void fadePlaces(const CKernelCall& call)
{
    double* out = call.samples(0);
    FadeState& state = *call.state<FadeState>(1);
    auto [current, previous, twoCos] = state;
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] = current;
        const double next = current * twoCos - previous;
        previous = current;
        current = next;
    }
    state.current = current;
    state.previous = previous;
}

// The arithmetic of `xfade`, whose places are operand 1 here.
void fadeByPlaces(const CKernelCall& call)
{
    const auto loop = [n = std::size_t{call.count}](double* out, const double* places, const double* in2,
                                                    const double* in3) {
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = (0.5 - places[i]) * in2[i] + (0.5 + places[i]) * in3[i];
        }
    };
    loop(call.samples(0), call.samples(1), call.samples(2), call.samples(3));
}

void fadeBy(const CKernelCall& call)
{
    const auto function = hasWideLanes() ? kWide<&fadeByPlaces> : &fadeByPlaces;
    function(call);
}

constexpr CKernelDef kTable[] = {
    {"xfadei", xfadeInit, 1, 1},
    {"xfade", xfade, 4, 3},
};

constexpr CKernelDef kSharedTable[] = {
    {"xfadep", fadePlaces, 2, 3},
    {"xfadeby", fadeBy, 4, 1},
};

} // namespace

std::span<const CKernelDef> crossfadeKernels()
{
    return kTable;
}

std::span<const CKernelDef> sharedFadeKernels()
{
    return kSharedTable;
}

} // namespace qel
