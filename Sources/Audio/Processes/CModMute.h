// Mute.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CNoiseSource.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel of mute. Slot: 0 `mute`. Passes the input by reference, or emits noise of +-1e-11 while muted.
class CModMuteModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kSlots = 1;

    struct Settings
    {
        bool isMuted = false;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModMuteModule(CKernelContext& kernels) : noise_(kernels) {}
    void resolveKernels(CKernelContext&) override { noise_.resolveKernels(); }
    void configure(const Settings& settings, const CAudioModulePlace&) { settings_ = settings; }
    void process(CAudioModuleStep& step);

private:
    Settings settings_;
    CNoiseSource noise_;
};

using CModMute = CAudioProcessTerminal<CModMuteModule>;
using CModMuteDef = CAudioModuleDef<CModMute>;
extern template class CAudioModuleDef<CModMute>;

} // namespace qel
