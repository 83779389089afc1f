// Gain with mute.
#include "CModGain.h"

#include <cmath>
#include <limits>

namespace qel {

namespace {

enum : int
{
    kGainSlot,
    kMuteSlot
};

} // namespace

CModGainModule::Settings CModGainModule::readSettings(const CAudioProcessSlots& slots,
                                                      const CAudioModulePlace& place)
{
    const bool isMuted = slots.value(kMuteSlot, place.group) >= 0.5;
    return {isMuted, isMuted ? 0.0 : slots.value(kGainSlot, place.group)};
}

void CModGainModule::configure(const Settings& settings, const CAudioModulePlace&)
{
    settings_ = settings;
    isUnity_ = !settings.isMuted && std::fabs(settings.gain - 1.0) < std::numeric_limits<double>::epsilon();
    if (!settings.isMuted) {
        noise_.stop();
    }
}

void CModGainModule::process(CAudioModuleStep& step)
{
    if (settings_.isMuted) {
        step.setOutput(noise_.make(step.count));
    } else if (isUnity_) {
        step.passThrough();
    } else {
        const CBufferRef output = step.allocate();
        step.submit(EKernel::kMulC, settings_.gain, {output, step.input(0)});
        step.setOutput(output);
    }
}

template class CAudioModuleDef<CModGain>;

} // namespace qel
