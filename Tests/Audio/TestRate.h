// The sample rate at which most is tested.
#pragma once

namespace qel::test {

inline constexpr double kRateHz = 48000.0;

} // namespace qel::test
