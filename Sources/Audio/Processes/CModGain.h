// Gain with mute.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CNoiseSource.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel of gain. Slots: 0 `gain` (linear), 1 `mute`. Unity passes the input by reference; a muted
// channel emits noise of +-1e-11 rather than silence, which keeps every recursive stage behind it clear of
// denormals.
class CModGainModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kSlots = 2;

    struct Settings
    {
        bool isMuted = false;
        double gain = 1.0;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModGainModule(CKernelContext& kernels) : noise_(kernels) {}
    void resolveKernels(CKernelContext&) override { noise_.resolveKernels(); }
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void process(CAudioModuleStep& step);

private:
    Settings settings_;
    bool isUnity_ = true;
    CNoiseSource noise_;
};

using CModGain = CAudioProcessTerminal<CModGainModule>;
using CModGainDef = CAudioModuleDef<CModGain>;
extern template class CAudioModuleDef<CModGain>;

} // namespace qel
