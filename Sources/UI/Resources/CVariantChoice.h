// Which of the stored variants is kept.
#pragma once

#include "Streams/CInputStream.h"

namespace qel {

// Every image and brush is stored for several interface scales: a u32 count, that many scales, that many
// variants. The one with the smallest distance from the wanted scale is kept, of equals the first.
struct CVariantChoice
{
    std::uint32_t count = 0;
    std::uint32_t index = 0; // of the variant that is kept
    double scale = 0.0;      // what that one was made for

    // Reads count and scales. Fails if no variant can be kept.
    CError load(CInputStream& stream, double wantedScale);
};

} // namespace qel
