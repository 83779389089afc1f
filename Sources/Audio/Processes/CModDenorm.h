// Noise against denormals, added at the head of the graph.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CNoiseSource.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: the input plus noise of +-1e-11.
class CModDenormModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kSlots = 0;

    struct Settings
    {
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots&, const CAudioModulePlace&) { return {}; }

    explicit CModDenormModule(CKernelContext& kernels) : noise_(kernels) {}
    void resolveKernels(CKernelContext&) override { noise_.resolveKernels(); }
    void configure(const Settings&, const CAudioModulePlace&) {}
    void process(CAudioModuleStep& step);

private:
    CNoiseSource noise_;
};

using CModDenorm = CAudioProcessTerminal<CModDenormModule>;
using CModDenormDef = CAudioModuleDef<CModDenorm>;
extern template class CAudioModuleDef<CModDenorm>;

} // namespace qel
