// A span of samples on its way from one process to another.
#pragma once

#include "CAudioStreamFormat.h"
#include "CBufferRef.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace qel {

// One entry of a link's queue. It owns one reference on its buffer.
struct CAudioChunk
{
    CAudioChunk* next;
    const CAudioStreamFormat* format;
    CBufferRef buffer;  // its offset moves as samples are consumed
    std::int32_t count; // samples left
};

// Free list of chunks, shared by all links of a graph. Grows in runs and never gives memory back while the
// graph lives, so that a graph in steady state allocates nothing. Audio thread.
class CAudioChunkPool
{
public:
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
    static constexpr std::size_t kRun = 16;

    void grow();

    std::vector<std::unique_ptr<std::array<CAudioChunk, kRun>>> runs_;
    CAudioChunk* free_ = nullptr;
};

} // namespace qel
