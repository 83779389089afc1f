// Sub-harmonic shifter.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CStateModule.h"
#include "Definitions/CAudioModuleDef.h"
#include "PShiftKernels.h"

namespace qel {

// One channel, an octave down. Slot: 0 `block-size`, the length of a grain in samples, at any sample rate. An
// instance begins with an empty ring and the first sample it sees, so a change is audible only
// through the fade.
class CModPShiftModule : public CStateModule<PShiftState>
{
public:
    static constexpr int kSlots = 1;
    static constexpr std::int32_t kMinGrain = 16;
    static constexpr std::int32_t kMaxGrain = 8192;

    struct Settings
    {
        std::int32_t grain = 2205;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModPShiftModule(CKernelContext& kernels) : CStateModule(kernels, "pshift") {}
    ~CModPShiftModule() override { releaseRing(); }
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void reset() override;
    void process(CAudioModuleStep& step);

private:
    void releaseRing();

    CBufferRef ring_;
};

class CModPShift : public CAudioProcessTerminal<CModPShiftModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(pshiftKernels()); }
};
using CModPShiftDef = CAudioModuleDef<CModPShift>;
extern template class CAudioModuleDef<CModPShift>;

} // namespace qel
