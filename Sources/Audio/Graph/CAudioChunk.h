// A span of samples on its way from one process to another.
#pragma once

#include "CAudioMemory.h"
#include "CAudioStreamFormat.h"
#include "CBufferRef.h"

#include <array>
#include <cstdint>

namespace qel {

// One entry of a link's queue. It owns one reference on its buffer.
struct CAudioChunk
{
    CAudioChunk* next;
    const CAudioStreamFormat* format;
    CBufferRef buffer;  // its offset moves as samples are consumed
    std::int32_t count; // samples left
};

// Free list of chunks, shared by all links of a graph. Grows in runs of the graph's memory and keeps them
// while the graph lives. Audio thread.
class CAudioChunkPool
{
public:
    explicit CAudioChunkPool(CAudioMemory& memory) : runs_(CAudioAllocator<Run*>(memory)) {}
    ~CAudioChunkPool();
    CAudioChunkPool(const CAudioChunkPool&) = delete;
    CAudioChunkPool& operator=(const CAudioChunkPool&) = delete;

    CAudioChunk* take()
    {
        if (!free_) {
            grow();
        }
        CAudioChunk* chunk = free_;
        free_ = chunk->next;
        return chunk;
    }
    void giveBack(CAudioChunk* chunk)
    {
        chunk->next = free_;
        free_ = chunk;
    }

private:
    using Run = std::array<CAudioChunk, 16>;

    void grow();

    CAudioVector<Run*> runs_;
    CAudioChunk* free_ = nullptr;
};

} // namespace qel
