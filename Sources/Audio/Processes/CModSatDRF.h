// Saturator.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CKernelState.h"
#include "Definitions/CAudioModuleDef.h"
#include "SatDRFKernels.h"

namespace qel {

// One channel of saturation. Slots: 0 `mode` (0 "Precise", 1 "Pumping"), 1 `drive` (linear), 2 `phasefreq`
// (Hz). Every change calibrates the level anew and starts from rest; smooth updates fade over it.
class CModSatDRFModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kSlots = 3;

    struct Settings
    {
        SatDRFState::EMode mode = SatDRFState::EMode::kPrecise;
        double drive = 1.0;
        double phaseFreqHz = 50.0;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModSatDRFModule(CKernelContext& kernels) : kernels_(kernels), state_(kernels) {}
    void resolveKernels(CKernelContext& kernels) override;
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void reset() override;
    void process(CAudioModuleStep& step);

private:
    CKernelContext& kernels_;
    CKernelState<SatDRFState> state_;
    int runKernel_ = -1;
    int initKernel_ = -1;
    int clearKernel_ = -1;
};

class CModSatDRF : public CAudioProcessTerminal<CModSatDRFModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(satDRFKernels()); }
};
using CModSatDRFDef = CAudioModuleDef<CModSatDRF>;

} // namespace qel
