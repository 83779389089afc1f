// Switch between the processed and the unprocessed signal.
#pragma once

#include "CAudioProcessTerminal.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// One channel: port 1 while `enable` (slot 0) is on, else port 0, by reference. Slot 1, `group-solo`, is
// declared and follows its parameter, and changes nothing of the sound.
class CModBypassModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 2;
    static constexpr int kSlots = 2;

    struct Settings
    {
        bool isBypassed = false;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place)
    {
        return {slots.value(0, place.group) >= 0.5};
    }

    explicit CModBypassModule(CKernelContext&) {}
    void resolveKernels(CKernelContext&) override {}
    void configure(const Settings& settings, const CAudioModulePlace&) { settings_ = settings; }
    void process(CAudioModuleStep& step)
    {
        const CBufferRef chosen = step.input(settings_.isBypassed ? 1 : 0);
        step.kernels.addRef(chosen);
        step.setOutput(chosen);
    }

private:
    Settings settings_;
};

using CModBypass = CAudioProcessTerminal<CModBypassModule>;
using CModBypassDef = CAudioModuleDef<CModBypass>;

} // namespace qel
