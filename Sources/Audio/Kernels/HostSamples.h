// The host's samples, and the graph's.
#pragma once

#include <cstddef>

namespace qel {

// Any thread; both arrays have `count` samples and lie apart. What is not finite, or louder than 180 dB above
// full scale, comes in as silence.
void takeHostSamples(const float* from, double* to, std::size_t count);
void takeHostSamples(const double* from, double* to, std::size_t count);
// Floats round to the nearest.
void giveHostSamples(const double* from, float* to, std::size_t count);
void giveHostSamples(const double* from, double* to, std::size_t count);

} // namespace qel
