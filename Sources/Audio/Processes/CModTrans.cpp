// Transient detector.
#include "CModTrans.h"

#include <algorithm>

namespace qel {

namespace {

enum : int
{
    kSenseFuncSlot,
    kSenseSlot,
    kScaleSlot,
    kTimeSlot,
    kDecayTimeSlot
};

constexpr std::array<const char*, CModTransModule::kCurves> kDetectNames = {"transvh", "transh", "transm",
                                                                            "transl", "transvl"};

} // namespace

CModTransModule::Settings CModTransModule::readSettings(const CAudioProcessSlots& slots,
                                                        const CAudioModulePlace& place)
{
    return {static_cast<int>(std::clamp(slots.value(kSenseFuncSlot, place.group), 0.0, kCurves - 1.0) + 0.5),
            slots.value(kSenseSlot, place.group), slots.value(kScaleSlot, place.group),
            slots.value(kTimeSlot, place.group), slots.value(kDecayTimeSlot, place.group)};
}

void CModTransModule::resolveKernels(CKernelContext& kernels)
{
    CStateModule::resolveKernels(kernels);
    std::transform(kDetectNames.begin(), kDetectNames.end(), detectKernels_.begin(),
                   [&](const char* name) { return kernels.findShortName(name); });
    decayKernel_ = kernels.findShortName("transdecay");
}

void CModTransModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    curve_ = settings.curve;
    if (TransState* record = state()) {
        record->sense = settings.sense;
        record->scale = settings.scale;
        record->timeSec = settings.timeSec;
        record->decaySec = settings.decaySec;
    }
    begin(place.sampleRateHz);
}

void CModTransModule::process(CAudioModuleStep& step)
{
    const CBufferRef output = step.allocate();
    step.submit(detectKernels_[static_cast<std::size_t>(curve_)], 0.0, {output, state_.ref(), step.input(0)});
    step.submit(decayKernel_, 0.0, {output, state_.ref()});
    step.setOutput(output);
}

template class CAudioModuleDef<CModTrans>;

} // namespace qel
