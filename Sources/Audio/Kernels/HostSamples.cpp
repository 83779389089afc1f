// The host's samples, and the graph's.
#include "HostSamples.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// No signal is as loud as this, but memory that nobody has filled may be. Filters and envelopes would take
// seconds to minutes to forget it, and what is not finite they would never forget.
constexpr double kLoudest = 1e9;

template <class Sample>
void take(const Sample* from, double* to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const double sample = from[i];
        to[i] = std::fabs(sample) <= kLoudest ? sample : 0.0;
    }
}

} // namespace

void takeHostSamples(const float* from, double* to, std::size_t count)
{
    take(from, to, count);
}

void takeHostSamples(const double* from, double* to, std::size_t count)
{
    take(from, to, count);
}

void giveHostSamples(const double* from, float* to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(from[i]);
    }
}

void giveHostSamples(const double* from, double* to, std::size_t count)
{
    std::copy_n(from, count, to);
}

} // namespace qel
