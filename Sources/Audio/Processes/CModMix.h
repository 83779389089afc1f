// Balance between two inputs.
#pragma once

#include "CAudioProcessTerminal.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: port 0 + (port 1 - port 0) * mix. Slot: 0 `mix`, 0 to 1.
class CModMixModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 2;
    static constexpr int kSlots = 1;

    struct Settings
    {
        double mix = 0.0;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModMixModule(CKernelContext&) {}
    void resolveKernels(CKernelContext&) override {}
    void configure(const Settings& settings, const CAudioModulePlace&) { settings_ = settings; }
    void process(CAudioModuleStep& step);

private:
    Settings settings_;
};

using CModMix = CAudioProcessTerminal<CModMixModule>;
using CModMixDef = CAudioModuleDef<CModMix>;
extern template class CAudioModuleDef<CModMix>;

} // namespace qel
