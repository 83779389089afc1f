// Balance between two inputs.
#include "CModMix.h"

namespace qel {

CModMixModule::Settings CModMixModule::readSettings(const CAudioProcessSlots& slots,
                                                    const CAudioModulePlace& place)
{
    return {slots.value(0, place.group)};
}

void CModMixModule::process(CAudioModuleStep& step)
{
    const CBufferRef output = step.allocate();
    step.submit(EKernel::kMix, settings_.mix, {output, step.input(1), step.input(0)});
    step.setOutput(output);
}

template class CAudioModuleDef<CModMix>;

} // namespace qel
