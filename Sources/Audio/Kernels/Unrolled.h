// Loops of a few steps, written out by the compiler.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace qel {

// Calls step(0) to step(kSteps - 1), each index a constant of its own type. Arrays that are only indexed by
// it can live in registers, where an ordinary inner loop would keep a filter's state in memory.
template <std::size_t kSteps, class Step>
[[gnu::always_inline]] inline void unrolled(Step step)
{
    [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) __attribute__((always_inline))
    {
        (step(std::integral_constant<std::size_t, kIndex>{}), ...);
    }
    (std::make_index_sequence<kSteps>{});
}

// Calls step(k, sample) for every k below kSteps and every sample below count, k and the next sample before
// k + 1 and this one: each step is a sample behind the one before it. What a step leaves for the next one
// stays until that has taken it. Where one sample after the other would have the processor wait for a long
// chain of sums, here it has work of several samples that waits for nothing.
template <std::size_t kSteps, class Step>
[[gnu::always_inline]] inline void staggered(std::size_t count, Step step)
{
    if (count == 0) {
        return;
    }
    for (std::size_t turn = 0; turn < count + kSteps - 1; ++turn) {
        unrolled<kSteps>([&](auto back) {
            constexpr std::integral_constant<std::size_t, kSteps - 1 - back> kStep;
            if (turn - kStep < count) {
                step(kStep, turn - kStep);
            }
        });
    }
}

} // namespace qel
