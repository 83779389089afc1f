// The whole effect as one plain loop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qel {

// What an engine without a graph would cost, to hold the real one against: one stereo group at the product's
// defaults, or with everything on (as test::busySettings() has it), written sample by sample from the
// formulas, with the functions of the C library. What both channels share is calculated once. It has no
// parameters, no settings that change, no fades and no meters. Its noise against denormals starts from other
// seeds.
class CPlainEffect
{
public:
    // 2^stages times the rate inside, stages from 0 to 3.
    CPlainEffect(double sampleRateHz, int stages, bool hasEverything);
    ~CPlainEffect();

    void process(const double* const* in, double* const* out, std::size_t count);

private:
    struct State;
    int stages_;
    bool hasEverything_;
    std::unique_ptr<State> state_;
};

} // namespace qel
