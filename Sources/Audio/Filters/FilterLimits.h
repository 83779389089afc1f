// How far the settings of second-order filters go. Outside of these the equations lose their digits; no value
// that a user can set comes near them.
#pragma once

#include <cstddef>

namespace qel {

constexpr std::size_t kSecondOrderParams = 3; // frequency, width, gain

constexpr double kMinCycles = 1e-7; // frequency, in parts of the sample rate
constexpr double kMaxOctaves = 16.0;
constexpr double kMinGain = 1e-4; // linear
constexpr double kMaxGain = 1e4;

} // namespace qel
