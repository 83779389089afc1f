// Release of the compressor.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CKernelState.h"
#include "CrunchKernels.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: a rectified level becomes a gain that falls at once and recovers in a time that depends on how
// far it has fallen. Slots: 0 `release` (seconds), 1 `drive` (linear), 2 `inverse`. A change keeps the gain
// that is running.
class CModCrunchRlsModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kSlots = 3;

    struct Settings
    {
        double releaseSec = 0.15;
        double drive = 1.0;
        bool isInverse = false;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModCrunchRlsModule(CKernelContext& kernels) : kernels_(kernels), state_(kernels) {}
    void resolveKernels(CKernelContext& kernels) override;
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void takeUp(CAudioModule& running) override;
    void reset() override;
    void process(CAudioModuleStep& step);

private:
    void writeParameters();

    CKernelContext& kernels_;
    CKernelState<CrunchRlsState> state_;
    Settings settings_;
    double sampleRateHz_ = 0.0; // 0 until configured
    int runKernel_ = -1;
    int initKernel_ = -1;
    int updateKernel_ = -1;
    int clearKernel_ = -1;
};

class CModCrunchRls : public CAudioProcessTerminal<CModCrunchRlsModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(crunchRlsKernels()); }
};
using CModCrunchRlsDef = CAudioModuleDef<CModCrunchRls>;

} // namespace qel
