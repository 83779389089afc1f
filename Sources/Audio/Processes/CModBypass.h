// Switch between the processed and the unprocessed signal, and the solo of channel groups.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CNoiseSource.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: port 1 while `enable` (slot 0) is on, else port 0, by reference. Slot 1, `group-solo`, has one
// entry for each channel group: while some group is soloed, the channels of all others fall silent, bypassed
// or not, which is noise of +-1e-11.
class CModBypassModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 2;
    static constexpr int kSlots = 2;

    struct Settings
    {
        bool isBypassed = false;
        bool isSilent = false;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModBypassModule(CKernelContext& kernels) : noise_(kernels) {}
    void resolveKernels(CKernelContext&) override { noise_.resolveKernels(); }
    void configure(const Settings& settings, const CAudioModulePlace&) { settings_ = settings; }
    void process(CAudioModuleStep& step);

private:
    Settings settings_;
    CNoiseSource noise_;
};

using CModBypass = CAudioProcessTerminal<CModBypassModule>;
using CModBypassDef = CAudioModuleDef<CModBypass>;
extern template class CAudioModuleDef<CModBypass>;

} // namespace qel
