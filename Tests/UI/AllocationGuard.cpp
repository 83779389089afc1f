// The counting functions of this test program; its tests include the header as it is.
#define QEL_DEFINE_ALLOCATION_GUARD
#include "AllocationGuard.h"
