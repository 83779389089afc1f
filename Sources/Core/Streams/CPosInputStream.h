// A reader with a position.
#pragma once

#include "Streams/CInputStream.h"

namespace qel {

// Adds a position and a size, both in bytes from the start, to a reader. Setting the position to exactly the
// size is allowed.
class CPosInputStream : public CInputStream
{
public:
    virtual CError getPosition(std::int64_t& out) = 0;
    virtual CError setPosition(std::int64_t position) = 0;
    virtual CError getSize(std::int64_t& out) = 0;
};

} // namespace qel
