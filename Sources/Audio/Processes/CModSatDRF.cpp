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
        // One by one, for what lies between them: twins are compared byte by byte.
        record->parameters.mode = settings.mode;
        record->parameters.drive = settings.drive;
        record->parameters.phaseFreqHz = settings.phaseFreqHz;
    }
    begin(place.sampleRateHz);
}

void CModSatDRFModule::takeDerived(const CModSatDRFModule& other)
{
    SatDRFState* const own = state();
    const SatDRFState* const from = other.state();
    if (own && from) {
        own->derived = from->derived;
    }
}

template class CAudioModuleDef<CModSatDRF>;

} // namespace qel
