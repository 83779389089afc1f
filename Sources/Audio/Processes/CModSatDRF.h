// Saturator.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CStateModule.h"
#include "Definitions/CAudioModuleDef.h"
#include "SatDRFKernels.h"

namespace qel {

// One channel of saturation. Slots: 0 `mode` (0 "Precise", 1 "Pumping"), 1 `drive` (linear), 2 `phasefreq`
// (Hz). Every change calibrates the level anew and starts from rest; smooth updates fade over it.
class CModSatDRFModule : public CStateModule<SatDRFState>
{
public:
    static constexpr int kSlots = 3;

    using Settings = SatDRFState::Parameters;
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModSatDRFModule(CKernelContext& kernels) : CStateModule(kernels, "satdrf") {}
    void configure(const Settings& settings, const CAudioModulePlace& place);
    // Called before configure() with the same settings as `other` has at the same rate.
    void takeDerived(const CModSatDRFModule& other);
};

class CModSatDRF : public CAudioProcessTerminal<CModSatDRFModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(satDRFKernels()); }
};
using CModSatDRFDef = CAudioModuleDef<CModSatDRF>;
extern template class CAudioModuleDef<CModSatDRF>;

} // namespace qel
