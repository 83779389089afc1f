// A span of samples on its way from one process to another.
#include "CAudioChunk.h"

namespace qel {

CAudioChunkPool::~CAudioChunkPool()
{
    for (Run* run : runs_) {
        runs_.get_allocator().memory()->giveBack(run, sizeof(Run));
    }
}

void CAudioChunkPool::grow()
{
    runs_.push_back(new (runs_.get_allocator().memory()->take(sizeof(Run))) Run);
    for (CAudioChunk& chunk : *runs_.back()) {
        giveBack(&chunk);
    }
}

} // namespace qel
