// Attack of the compressor.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CStateModule.h"
#include "CrunchKernels.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: a gain that jumps becomes one that moves. Slots: 0 `attack` (seconds), 1 `attack-type` (0 a
// fixed time; 1 and 2 a time that depends on how far the gain has to move), 2 `inverse`. A change keeps the
// gain that is running.
class CModCrunchAtkModule : public CStateModule<CrunchAtkState>
{
public:
    static constexpr int kSlots = 3;

    struct Settings
    {
        double attackSec = 0.02;
        CrunchAtkState::EType type = CrunchAtkState::EType::kFixed;
        bool isInverse = false;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModCrunchAtkModule(CKernelContext& kernels) : CStateModule(kernels, "crunchatk") {}
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void takeUp(CAudioModule& running) override;
};

class CModCrunchAtk : public CAudioProcessTerminal<CModCrunchAtkModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(crunchAtkKernels()); }
};
using CModCrunchAtkDef = CAudioModuleDef<CModCrunchAtk>;
extern template class CAudioModuleDef<CModCrunchAtk>;

} // namespace qel
