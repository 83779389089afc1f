// Transient detector.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CStateModule.h"
#include "Definitions/CAudioModuleDef.h"
#include "TransKernels.h"

#include <array>

namespace qel {

// One channel: a rectified level becomes a control signal between 0 and 1 that rises where the level changes.
// Slots: 0 `sensefunc` (which of five curves), 1 `sense` (0 to 1), 2 `scale` (linear), 3 `time`, 4
// `decay-time` (both in seconds). A change of any of them starts the detector anew.
class CModTransModule : public CStateModule<TransState>
{
public:
    static constexpr int kSlots = 5;
    static constexpr int kCurves = 5;

    struct Settings
    {
        int curve = 0; // from "V.High" to "V.Low"
        double sense = 0.0;
        double scale = 1.0;
        double timeSec = 0.025;
        double decaySec = 0.08;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModTransModule(CKernelContext& kernels) : CStateModule(kernels, "trans") {}
    void resolveKernels(CKernelContext& kernels) override;
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void process(CAudioModuleStep& step);

private:
    int curve_ = 0;
    std::array<int, kCurves> detectKernels_{};
    int decayKernel_ = -1;
};

class CModTrans : public CAudioProcessTerminal<CModTransModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(transKernels()); }
};
using CModTransDef = CAudioModuleDef<CModTrans>;
extern template class CAudioModuleDef<CModTrans>;

} // namespace qel
