// Mute.
#include "CModMute.h"

namespace qel {

CModMuteModule::Settings CModMuteModule::readSettings(const CAudioProcessSlots& slots,
                                                      const CAudioModulePlace& place)
{
    return {slots.value(0, place.group) >= 0.5};
}

void CModMuteModule::process(CAudioModuleStep& step)
{
    if (settings_.isMuted) {
        step.setOutput(noise_.make(step.count));
    } else {
        step.passThrough();
    }
}

template class CAudioModuleDef<CModMute>;

} // namespace qel
