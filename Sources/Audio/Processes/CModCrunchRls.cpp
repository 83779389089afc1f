// Release of the compressor.
#include "CModCrunchRls.h"

namespace qel {

namespace {

enum : int
{
    kReleaseSlot,
    kDriveSlot,
    kInverseSlot
};

} // namespace

CModCrunchRlsModule::Settings CModCrunchRlsModule::readSettings(const CAudioProcessSlots& slots,
                                                                const CAudioModulePlace& place)
{
    return {slots.value(kReleaseSlot, place.group), slots.value(kDriveSlot, place.group),
            slots.value(kInverseSlot, place.group) >= 0.5};
}

void CModCrunchRlsModule::resolveKernels(CKernelContext& kernels)
{
    runKernel_ = kernels.findShortName("crunchrls");
    initKernel_ = kernels.findShortName("crunchrlsi");
    updateKernel_ = kernels.findShortName("crunchrlsu");
    clearKernel_ = kernels.findShortName("crunchrlsc");
}

// Before each init or update, as both scale the drive in place.
void CModCrunchRlsModule::writeParameters()
{
    if (CrunchRlsState* state = state_.get()) {
        state->releaseSec = settings_.releaseSec;
        state->drive = settings_.drive;
        state->isInverse = settings_.isInverse;
    }
}

void CModCrunchRlsModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    const bool isRunning = sampleRateHz_ > 0.0;
    settings_ = settings;
    sampleRateHz_ = place.sampleRateHz;
    writeParameters();
    if (isRunning) {
        kernels_.submit(updateKernel_, 0, sampleRateHz_, {state_.ref(), state_.ref()});
    } else {
        kernels_.submit(initKernel_, 0, sampleRateHz_, {state_.ref()});
    }
}

void CModCrunchRlsModule::takeUp(CAudioModule& running)
{
    writeParameters();
    kernels_.submit(updateKernel_, 0, sampleRateHz_,
                    {state_.ref(), static_cast<CModCrunchRlsModule&>(running).state_.ref()});
}

void CModCrunchRlsModule::reset()
{
    kernels_.submit(clearKernel_, 0, 0.0, {state_.ref()});
}

void CModCrunchRlsModule::process(CAudioModuleStep& step)
{
    const CBufferRef output = step.allocate();
    step.submit(runKernel_, 0.0, {output, state_.ref(), step.input(0)});
    step.setOutput(output);
}

} // namespace qel
