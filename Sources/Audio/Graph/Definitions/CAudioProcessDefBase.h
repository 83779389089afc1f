// Root of all process definitions of the signal graph.
#pragma once

#include "CObject.h"
#include "Definitions/CAudioDeclarations.h"

#include <memory>
#include <mutex>
#include <vector>

namespace qel {

class CAudioParamDef;
class CAudioProcessBase;

// Describes one process of the graph and makes run-time processes of it, as many as instances and groups ask
// for. Definitions stand in the shared tree, are read once, at init, and do not change afterwards, so any
// thread may ask them; later changes of their attributes have no effect. They outlive the processes made of
// them, which keep a reference.
//
// init fails on values that no process could run with; other text that does not convert means the default, as
// for every attribute. Parameter names are kept as they stand in the tree: they are relative to the process,
// and each instance finds its own.
class CAudioProcessDefBase : public CObject
{
public:
    // As a bypass state: never bypassed. Any negative number means the same.
    static constexpr std::int32_t kNoState = -1;
    static constexpr double kDefaultXfadeSec = 0.015;

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;

    // A new process of the class that this definition stands for, not yet initialised.
    virtual std::unique_ptr<CAudioProcessBase> createProcess() const = 0;

    // --- shape: how many instances there are, and what each of them sees

    // One child tree for each stack element (CAudioProcessStack).
    bool isStacked() const { return isStacked_; }
    // One child tree for each frequency band (CAudioProcessMB).
    bool isMultiband() const { return isMultiband_; }
    // One module instance for each channel group, instead of one for each channel.
    bool isGrouped() const { return isGrouped_; }
    // The process sees all channels of its input as one unit.
    bool isWhole() const { return isWhole_; }
    // One module instance over all channels.
    bool isTerminalWhole() const { return isTerminalWhole_; }
    // Selects the stack element of each channel; empty: the channel's group does.
    const CString& stackParam() const { return stackParam_; }
    // Added to the stack index where parameters are read; never negative.
    std::int32_t stackIndexShift() const { return stackIndexShift_; }
    const CString& multibandFreqParam() const { return multibandFreqParam_; }
    const CString& multibandCountParam() const { return multibandCountParam_; }

    // --- place in the enclosing compound

    // Not created by the compound; a switch or a multiband wrapper makes instances of it.
    bool isPrototype() const { return isPrototype_; }
    // Not part of the automatic chain; fed by explicit links alone.
    bool isOutOfOrder() const { return isOutOfOrder_; }
    // Bypassed while this state of the compound is active; negative: never.
    std::int32_t bypassStateId() const { return bypassStateId_; }
    // Several sources on a port are averaged, not added.
    bool isWeightedInput() const { return isWeightedInput_; }

    // --- parameters

    // A change is crossfaded instead of jumping.
    bool isSmoothUpdate() const { return isSmoothUpdate_; }
    // How long that takes, in seconds; as given, which may be anything.
    double xfadeLengthSec() const { return xfadeLengthSec_; }
    // A change is delayed by the latency in front of the process, so that it meets the audio it was meant
    // for.
    bool usesTimeShift() const { return usesTimeShift_; }
    // Read at group 0, whatever the channel's group.
    bool isGroup0() const { return isGroup0_; }
    // Read at element 0, whatever the channel.
    bool isElement0() const { return isElement0_; }

    // A parameter that the process's code knows by a number.
    struct Slot
    {
        std::int32_t number;
        CString paramName;           // relative to the process
        const CAudioParamDef* local; // what this definition declares under that name, or null
    };
    // In the order of the tree; none before initChilds.
    const std::vector<Slot>& slots() const { return slots_; }
    // Of this definition and all below it. Collected when the first instance asks.
    const CAudioDeclarations& declarations() const;

private:
    CString multibandFreqParam_;
    CString multibandCountParam_;
    CString stackParam_;
    std::int32_t stackIndexShift_ = 0;
    std::int32_t bypassStateId_ = kNoState;
    double xfadeLengthSec_ = kDefaultXfadeSec;
    bool isStacked_ = false;
    bool isSmoothUpdate_ = false;
    bool isMultiband_ = false;
    bool isGrouped_ = false;
    bool isWhole_ = false;
    bool isTerminalWhole_ = false;
    bool isPrototype_ = false;
    bool isOutOfOrder_ = false;
    bool isGroup0_ = false;
    bool isElement0_ = false;
    bool usesTimeShift_ = true;
    bool isWeightedInput_ = false;

    std::vector<Slot> slots_;
    mutable std::once_flag declarationsFlag_;
    mutable CAudioDeclarations declarations_;
};

} // namespace qel
