// Noise against denormals, added at the head of the graph.
#include "CModDenorm.h"

namespace qel {

void CModDenormModule::process(CAudioModuleStep& step)
{
    step.setOutput(noise_.addTo(step.input(0), step.count));
}

template class CAudioModuleDef<CModDenorm>;

} // namespace qel
