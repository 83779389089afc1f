// What a stream of samples is: rate, latency and channel group.
#include "CAudioStreamFormat.h"

#include <algorithm>

namespace qel {

const CAudioStreamFormat* CAudioFormatTable::intern(const CAudioStreamFormat& format)
{
    const auto entry = std::find(formats_.begin(), formats_.end(), format);
    return entry != formats_.end() ? &*entry : &formats_.emplace_back(format);
}

} // namespace qel
