// Whether the processor has registers of four samples.
#include "WideLanes.h"

namespace qel {

namespace {

constinit bool areAllowed = true;

} // namespace

bool hasWideLanes()
{
#if QEL_HAS_WIDE_LANES
    return areAllowed && __builtin_cpu_supports("avx2"); // asked when the process started
#else
    return false;
#endif
}

void allowWideLanes(bool isAllowed)
{
    areAllowed = isAllowed;
}

} // namespace qel
