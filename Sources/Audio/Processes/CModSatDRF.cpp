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

void CModSatDRFModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    if (SatDRFState* record = state()) {
        record->mode = settings.mode;
        record->drive = settings.drive;
        record->phaseFreqHz = settings.phaseFreqHz;
    }
    begin(place.sampleRateHz);
}

template class CAudioModuleDef<CModSatDRF>;

} // namespace qel
