// Modules without parameters that are one kernel each.
#include "CModArithmetic.h"

namespace qel {

template class CAudioModuleDef<CModAbs>;
template class CAudioModuleDef<CModMult>;
template class CAudioModuleDef<CModSignalMix>;

} // namespace qel
