// Release of the compressor.
#pragma once

#include "CAudioProcessTerminal.h"
#include "CStateModule.h"
#include "CrunchKernels.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: a rectified level becomes a gain that falls at once and recovers in a time that depends on how
// far it has fallen. Slots: 0 `release` (seconds), 1 `drive` (linear), 2 `inverse`. A change keeps the gain
// that is running.
class CModCrunchRlsModule : public CStateModule<CrunchRlsState>
{
public:
    static constexpr int kSlots = 3;
    static constexpr bool kHasFixedCalls = true;

    struct Settings
    {
        double releaseSec = 0.15;
        double drive = 1.0;
        bool isInverse = false;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModCrunchRlsModule(CKernelContext& kernels) : CStateModule(kernels, "crunchrls") {}
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void takeUp(CAudioModule& running) override;
    // Called before configure() with the same settings as `other` has at the same rate.
    void takeDerived(const CModCrunchRlsModule& other);

private:
    void writeParameters();

    Settings settings_;
};

class CModCrunchRls : public CAudioProcessTerminal<CModCrunchRlsModule>
{
public:
    using CAudioProcessTerminal::CAudioProcessTerminal;
    void registerKernels() override { graph().kernels.addKernels(crunchRlsKernels()); }
};
using CModCrunchRlsDef = CAudioModuleDef<CModCrunchRls>;
extern template class CAudioModuleDef<CModCrunchRls>;

} // namespace qel
