// A writer with a position.
#pragma once

#include "Streams/COutputStream.h"

namespace qel {

// Adds a position and a size, both in bytes from the start, to a writer. The position may stand beyond the
// end; the next write then fills the gap.
class CPosOutputStream : public COutputStream
{
public:
    virtual CError getPosition(std::int64_t& out) = 0;
    virtual CError setPosition(std::int64_t position) = 0;
    virtual CError getSize(std::int64_t& out) = 0;
};

} // namespace qel
