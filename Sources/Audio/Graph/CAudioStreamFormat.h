// What a stream of samples is: rate, latency and channel group.
#pragma once

#include "CAudioMemory.h"

#include <cstdint>
#include <deque>

namespace qel {

// Travels with every chunk of a stream, so that a change of format takes effect at the very sample where it
// happens.
struct CAudioStreamFormat
{
    double sampleRateHz = 44100.0;
    double latencySamples = 0.0; // at this rate; a real number, rounded once, where the host is told
    std::int32_t group = 0;      // channel group, 0 to 7

    double latencySec() const { return latencySamples / sampleRateHz; }
    bool operator==(const CAudioStreamFormat&) const = default;
};

// Keeps one copy of each distinct format of a graph, so that chunks carry a pointer and equality is pointer
// equality. Pointers stay valid as long as the table. There are as many formats as there are rates, latencies
// and groups in use; only a format never seen before takes memory, which is the graph's. Audio thread.
class CAudioFormatTable
{
public:
    explicit CAudioFormatTable(CAudioMemory& memory) : formats_(CAudioAllocator<CAudioStreamFormat>(memory))
    {}

    const CAudioStreamFormat* intern(const CAudioStreamFormat& format);

private:
    std::deque<CAudioStreamFormat, CAudioAllocator<CAudioStreamFormat>> formats_;
};

} // namespace qel
