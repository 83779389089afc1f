// Saturator.
#include "CModSatDRF.h"

namespace qel {

namespace {

enum : int
{
    kModeSlot,
    kDriveSlot,
    kPhaseFreqSlot
};

} // namespace

CModSatDRFModule::Settings CModSatDRFModule::readSettings(const CAudioProcessSlots& slots,
                                                          const CAudioModulePlace& place)
{
    const bool isPumping = slots.value(kModeSlot, place.group) >= 0.5;
    return {isPumping ? SatDRFState::EMode::kPumping : SatDRFState::EMode::kPrecise,
            slots.value(kDriveSlot, place.group), slots.value(kPhaseFreqSlot, place.group)};
}

void CModSatDRFModule::resolveKernels(CKernelContext& kernels)
{
    runKernel_ = kernels.findShortName("satdrf");
    initKernel_ = kernels.findShortName("satdrfi");
    clearKernel_ = kernels.findShortName("satdrfc");
}

void CModSatDRFModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    if (SatDRFState* state = state_.get()) {
        state->mode = settings.mode;
        state->drive = settings.drive;
        state->phaseFreqHz = settings.phaseFreqHz;
    }
    kernels_.submit(initKernel_, 0, place.sampleRateHz, {state_.ref()});
}

void CModSatDRFModule::reset()
{
    kernels_.submit(clearKernel_, 0, 0.0, {state_.ref()});
}

void CModSatDRFModule::process(CAudioModuleStep& step)
{
    const CBufferRef output = step.allocate();
    step.submit(runKernel_, 0.0, {output, state_.ref(), step.input(0)});
    step.setOutput(output);
}

} // namespace qel
