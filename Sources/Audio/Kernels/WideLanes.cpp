// Whether the processor has registers of four samples.
#include "WideLanes.h"

namespace qel {

namespace {

bool findWideLanes()
{
#if QEL_HAS_WIDE_LANES
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

bool mayUseWideLanes = findWideLanes();

} // namespace

bool hasWideLanes()
{
    return mayUseWideLanes;
}

void allowWideLanes(bool isAllowed)
{
    mayUseWideLanes = isAllowed && findWideLanes();
}

} // namespace qel
