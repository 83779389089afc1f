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

// put(i, place) for each sample of the call.
template <class Put>
[[gnu::always_inline]] inline void forPlaces(const CKernelCall& call, Put&& put)
{
    FadeState& state = *call.state<FadeState>(1);
    auto [current, previous, twoCos] = state;
    for (std::size_t i = 0; i < call.count; ++i) {
        put(i, current);
        const double next = current * twoCos - previous;
        previous = current;
        current = next;
    }
    state.current = current;
    state.previous = previous;
}

[[gnu::always_inline]] inline double mixAt(double place, double in2, double in3)
{
    return (0.5 - place) * in2 + (0.5 + place) * in3;
}

void xfade(const CKernelCall& call)
{
    double* out = call.samples(0);
    const double* in2 = call.samples(2);
    const double* in3 = call.samples(3);
    forPlaces(call, [&](std::size_t i, double place) { out[i] = mixAt(place, in2[i], in3[i]); });
}

// The fade's place at each sample, for any number of signals that are faded alike.
void fadePlaces(const CKernelCall& call)
{
    double* out = call.samples(0);
    forPlaces(call, [out](std::size_t i, double place) { out[i] = place; });
}

// What `xfade` puts out, with the places at operand 1.
void fadeByPlaces(const CKernelCall& call)
{
    const auto loop = [n = std::size_t{call.count}](double* out, const double* places, const double* in2,
                                                    const double* in3) {
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = mixAt(places[i], in2[i], in3[i]);
        }
    };
    loop(call.samples(0), call.samples(1), call.samples(2), call.samples(3));
}

constexpr CKernelDef kTable[] = {
    {"xfadei", xfadeInit, 1, 1},
    {"xfade", xfade, 4, 3},
};

constexpr CKernelDef kSharedTable[] = {
    {"xfadep", fadePlaces, 2, 3},
    {"xfadeby", runWidest<&fadeByPlaces, const CKernelCall&>, 4, 1},
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
