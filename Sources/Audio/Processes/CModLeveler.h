// Links the levels of a group's channels.
#pragma once

#include "CAudioProcessTerminal.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// All channels of a group: merges their rectified levels into one and moves each channel towards it. Slots: 0
// `mode` (0 the largest level counts, else the smallest), 1 `mix` (0 to 1, how far the mean of the levels
// replaces it), 2 `linking` (0 to 1, how far each channel takes the merged level).
class CModLevelerModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;
    static constexpr int kSlots = 3;

    struct Settings
    {
        bool takesSmallest = false;
        double mix = 0.0;
        double linking = 1.0;
        bool operator==(const Settings&) const = default;
    };
    static Settings readSettings(const CAudioProcessSlots& slots, const CAudioModulePlace& place);

    explicit CModLevelerModule(CKernelContext&) {}
    void resolveKernels(CKernelContext&) override {}
    void configure(const Settings& settings, const CAudioModulePlace& place);
    void process(CAudioModuleStep& step);

private:
    // Each returns one reference.
    CBufferRef level(CAudioModuleStep& step) const;
    CBufferRef extreme(CAudioModuleStep& step) const;
    CBufferRef mean(CAudioModuleStep& step) const;

    bool takesSmallest_ = false;
    double mix_ = 0.0;
    double freedom_ = 0.0; // how far a channel keeps its own level
};

using CModLeveler = CAudioProcessTerminal<CModLevelerModule>;
using CModLevelerDef = CAudioModuleDef<CModLeveler>;
extern template class CAudioModuleDef<CModLeveler>;

} // namespace qel
