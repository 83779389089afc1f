// A span of samples on its way from one process to another.
#include "CAudioChunk.h"

namespace qel {

void CAudioChunkPool::grow()
{
    runs_.push_back(std::make_unique<std::array<CAudioChunk, kRun>>());
    for (CAudioChunk& chunk : *runs_.back()) {
        giveBack(&chunk);
    }
}

} // namespace qel
