// Kernels in registers of AVX2.
#pragma once

#include "SampleLanes.h"

namespace qel {

#if QEL_HAS_WIDE_LANES

template <auto kBody, class... Args>
[[gnu::target("avx2"), gnu::flatten]] void runWide(Args... args)
{
    kBody(args...);
}

// The function, with all that it calls, compiled for AVX2; null where no registers are. Only to be called if
// hasWideLanes(). There is no fused multiply-add in it, so the bits stay the same.
template <auto kBody>
inline constexpr auto kWide =
    []<class... Args>(void (*)(Args...)) { return &runWide<kBody, Args...>; }(kBody);

#else

template <auto kBody>
inline constexpr decltype(kBody) kWide = nullptr;

#endif

// Runs the widest form of a function that the processor has.
template <auto kBody, class... Args>
void runWidest(Args... args)
{
    const auto function = hasWideLanes() ? kWide<kBody> : kBody;
    function(args...);
}

} // namespace qel
