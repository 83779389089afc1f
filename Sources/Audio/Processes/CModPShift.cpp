// Sub-harmonic shifter.
#include "CModPShift.h"

#include <algorithm>

namespace qel {

namespace {

constexpr int kBlockSizeSlot = 0;

} // namespace

CModPShiftModule::Settings CModPShiftModule::readSettings(const CAudioProcessSlots& slots,
                                                          const CAudioModulePlace& place)
{
    // The kernel trusts the length, so what lies outside the range may not reach it.
    const double grain = std::clamp<double>(slots.value(kBlockSizeSlot, place.group), kMinGrain, kMaxGrain);
    return {static_cast<std::int32_t>(grain + 0.5)};
}

void CModPShiftModule::releaseRing()
{
    if (!ring_.isNone()) {
        kernels_.release(ring_);
        ring_ = {};
    }
}

void CModPShiftModule::configure(const Settings& settings, const CAudioModulePlace&)
{
    releaseRing();
    // Not a sample buffer: all of those get the room of the longest, and the ring is longer than any step.
    ring_ = kernels_.allocate(PShiftState::ringSamples(settings.grain) * sizeof(double));
    if (PShiftState* record = state()) {
        record->grain = settings.grain;
    }
    kernels_.submit(initKernel_, 0, 0.0, {state_.ref(), ring_});
}

void CModPShiftModule::reset()
{
    kernels_.submit(clearKernel_, 0, 0.0, {state_.ref(), ring_});
}

void CModPShiftModule::process(CAudioModuleStep& step)
{
    const CBufferRef output = step.allocate();
    step.submit(runKernel_, 0.0, {output, state_.ref(), ring_, step.input(0)});
    step.setOutput(output);
}

template class CAudioModuleDef<CModPShift>;

} // namespace qel
