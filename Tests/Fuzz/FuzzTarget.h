// What a fuzz target provides; the driver is libFuzzer or, in the ordinary tests, our own short one.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace qel {

// Must come back from any input, without a crash, a leak or a hang.
void fuzzOne(std::span<const std::uint8_t> input);
// Valid inputs to start from.
std::vector<std::vector<std::uint8_t>> fuzzSeeds();

} // namespace qel
