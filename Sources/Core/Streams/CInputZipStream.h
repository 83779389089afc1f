// Decompressing reader.
#pragma once

#include "Streams/CInputStream.h"

#include <memory>

namespace qel {

// Inflates a zlib stream from another stream, which must live as long as this one is open. Reads ahead by up
// to kBlockBytes and gives nothing back, so what stands behind the zlib stream in the source is lost to
// others. Call order: open, read..., close; open on an open stream closes it first.
class CInputZipStream : public CInputStream
{
public:
    static constexpr std::size_t kBlockBytes = 32768;

    CInputZipStream();
    ~CInputZipStream() override;

    CError open(CInputStream& source);
    CError close() override;
    // Always fails: skipping would have to inflate anyway.
    CError consume(std::size_t count) override;
    CError read(void* buffer, std::size_t count) override;
    // Delivers less than wanted only where the zlib stream ends.
    CError readStreamed(void* buffer, std::size_t& inOutCount) override;

    // To be called when all wanted bytes were read: fails if the stream has more to give, stops before its
    // checksum or does not match it.
    CError checkEnd();

private:
    struct State;

    // Inflates up to `count` bytes; `outDone` is below `count` only at the end of the zlib stream.
    CError inflateSome(void* buffer, std::size_t count, std::size_t& outDone);
    CError fillBlock();

    std::unique_ptr<State> state_;
};

} // namespace qel
