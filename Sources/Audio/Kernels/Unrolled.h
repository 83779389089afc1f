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

} // namespace qel
