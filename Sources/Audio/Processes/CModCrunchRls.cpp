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

// Before each init or update, as both scale the drive in place.
void CModCrunchRlsModule::writeParameters()
{
    if (CrunchRlsState* record = state()) {
        record->releaseSec = settings_.releaseSec;
        record->drive = settings_.drive;
        record->isInverse = settings_.isInverse;
    }
}

void CModCrunchRlsModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    settings_ = settings;
    writeParameters();
    beginOrGoOn(place.sampleRateHz);
}

void CModCrunchRlsModule::takeDerived(const CModCrunchRlsModule& other)
{
    CrunchRlsState* const own = state();
    const CrunchRlsState* const from = other.state();
    if (!own || !from) {
        return;
    }
    if (own->derived.isFor(from->derived.sampleRateHz, from->derived.releaseSec)) {
        own->derived.curve = from->derived.curve;
    } else {
        own->derived = from->derived;
    }
}

void CModCrunchRlsModule::takeUp(CAudioModule& running)
{
    writeParameters();
    goOnFrom(static_cast<CModCrunchRlsModule&>(running), sampleRateHz_);
}

template class CAudioModuleDef<CModCrunchRls>;

} // namespace qel
