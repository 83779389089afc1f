// Attack of the compressor.
#include "CModCrunchAtk.h"

#include <algorithm>

namespace qel {

namespace {

enum : int
{
    kAttackSlot,
    kAttackTypeSlot,
    kInverseSlot
};

} // namespace

CModCrunchAtkModule::Settings CModCrunchAtkModule::readSettings(const CAudioProcessSlots& slots,
                                                                const CAudioModulePlace& place)
{
    constexpr double kLastType = 2.0;
    const double type = std::clamp(slots.value(kAttackTypeSlot, place.group), 0.0, kLastType);
    return {slots.value(kAttackSlot, place.group),
            static_cast<CrunchAtkState::EType>(static_cast<std::int32_t>(type + 0.5)),
            slots.value(kInverseSlot, place.group) >= 0.5};
}

void CModCrunchAtkModule::resolveKernels(CKernelContext& kernels)
{
    runKernel_ = kernels.findShortName("crunchatk");
    initKernel_ = kernels.findShortName("crunchatki");
    updateKernel_ = kernels.findShortName("crunchatku");
    clearKernel_ = kernels.findShortName("crunchatkc");
}

void CModCrunchAtkModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    if (CrunchAtkState* state = state_.get()) {
        state->attackSec = settings.attackSec;
        state->type = settings.type;
        state->isShaped = false; // nothing asks for the reciprocal
        state->isInverse = settings.isInverse;
    }
    const bool isRunning = sampleRateHz_ > 0.0;
    sampleRateHz_ = place.sampleRateHz;
    if (isRunning) {
        kernels_.submit(updateKernel_, 0, sampleRateHz_, {state_.ref(), state_.ref()});
    } else {
        kernels_.submit(initKernel_, 0, sampleRateHz_, {state_.ref()});
    }
}

void CModCrunchAtkModule::takeUp(CAudioModule& running)
{
    kernels_.submit(updateKernel_, 0, sampleRateHz_,
                    {state_.ref(), static_cast<CModCrunchAtkModule&>(running).state_.ref()});
}

void CModCrunchAtkModule::reset()
{
    kernels_.submit(clearKernel_, 0, 0.0, {state_.ref()});
}

void CModCrunchAtkModule::process(CAudioModuleStep& step)
{
    const CBufferRef output = step.allocate();
    step.submit(runKernel_, 0.0, {output, state_.ref(), step.input(0)});
    step.setOutput(output);
}

} // namespace qel
