// A span of samples on its way from one process to another.
#include "CAudioChunk.h"

namespace qel {

CAudioChunk* CAudioChunkPool::take()
{
    if (!free_) {
        runs_.push_back(std::make_unique<std::array<CAudioChunk, kRun>>());
        for (CAudioChunk& chunk : *runs_.back()) {
            giveBack(&chunk);
        }
    }
    CAudioChunk* chunk = free_;
    free_ = chunk->next;
    return chunk;
}

void CAudioChunkPool::giveBack(CAudioChunk* chunk)
{
    chunk->next = free_;
    free_ = chunk;
}

} // namespace qel
