// Switch between the processed and the unprocessed signal, and the solo of channel groups.
#include "CModBypass.h"

namespace qel {

CModBypassModule::Settings CModBypassModule::readSettings(const CAudioProcessSlots& slots,
                                                          const CAudioModulePlace& place)
{
    bool isAnySoloed = false;
    for (int group = 0; group < slots.entryCount(1, 0); ++group) {
        isAnySoloed = isAnySoloed || slots.value(1, 0, group) >= 0.5;
    }
    return {slots.value(0, place.group) >= 0.5, isAnySoloed && slots.value(1, 0, place.group) < 0.5};
}

void CModBypassModule::process(CAudioModuleStep& step)
{
    if (settings_.isSilent) {
        step.setOutput(noise_.make(step.count));
        return;
    }
    const CBufferRef chosen = step.input(settings_.isBypassed ? 1 : 0);
    step.kernels.addRef(chosen);
    step.setOutput(chosen);
}

template class CAudioModuleDef<CModBypass>;

} // namespace qel
