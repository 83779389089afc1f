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

void CModCrunchAtkModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    if (CrunchAtkState* record = state()) {
        record->attackSec = settings.attackSec;
        record->type = settings.type;
        record->isShaped = false; // nothing asks for the reciprocal
        record->isInverse = settings.isInverse;
    }
    beginOrGoOn(place.sampleRateHz);
}

void CModCrunchAtkModule::takeUp(CAudioModule& running)
{
    goOnFrom(static_cast<CModCrunchAtkModule&>(running), sampleRateHz_);
}

template class CAudioModuleDef<CModCrunchAtk>;

} // namespace qel
