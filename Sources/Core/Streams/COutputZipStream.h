// Compressing writer.
#pragma once

#include "Streams/COutputStream.h"

#include <memory>

namespace qel {

// Deflates into another stream, which must live as long as this one is open; the target gets blocks of
// kBlockBytes and a last, shorter one. Call order: open, write..., close, which ends the zlib stream: without
// a successful close() the target holds no usable data. open on an open stream closes it first.
class COutputZipStream : public COutputStream
{
public:
    static constexpr std::size_t kBlockBytes = 32768;

    COutputZipStream();
    ~COutputZipStream() override;

    // `level` is zlib's, from 0 to 9; -1 is its default.
    CError open(COutputStream& target, int level);
    CError close();
    CError write(const void* buffer, std::size_t count) override;

private:
    struct State;

    static CError flushBlock(State& state);
    static CError finish(State& state);

    std::unique_ptr<State> state_;
};

} // namespace qel
