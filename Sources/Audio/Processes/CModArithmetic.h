// Modules without parameters that are one kernel each.
#pragma once

#include "CAudioProcessTerminal.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel of one kernel over its input ports, which stand in the kernel's operands in the order given.
template <EKernel Kernel, int... Ports>
class CKernelModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = sizeof...(Ports);
    static constexpr int kSlots = 0;

    struct Settings
    {
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots&, const CAudioModulePlace&) { return {}; }

    explicit CKernelModule(CKernelContext&) {}
    void resolveKernels(CKernelContext&) override {}
    void configure(const Settings&, const CAudioModulePlace&) {}
    void process(CAudioModuleStep& step)
    {
        const CBufferRef output = step.allocate();
        step.submit(Kernel, 0.0, {output, step.input(Ports)...});
        step.setOutput(output);
    }
};

// |in|
using CModAbs = CAudioProcessTerminal<CKernelModule<EKernel::kAbs, 0>>;
using CModAbsDef = CAudioModuleDef<CModAbs>;
extern template class CAudioModuleDef<CModAbs>;

// port 0 * port 1
using CModMult = CAudioProcessTerminal<CKernelModule<EKernel::kMul2, 0, 1>>;
using CModMultDef = CAudioModuleDef<CModMult>;
extern template class CAudioModuleDef<CModMult>;

// port 1 + (port 0 - port 1) * port 2, sample by sample
using CModSignalMix = CAudioProcessTerminal<CKernelModule<EKernel::kMixB, 0, 1, 2>>;
using CModSignalMixDef = CAudioModuleDef<CModSignalMix>;
extern template class CAudioModuleDef<CModSignalMix>;

} // namespace qel
