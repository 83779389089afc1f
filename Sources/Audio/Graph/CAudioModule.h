// Base of the signal-processing modules, and what they work with in a step.
#pragma once

#include "CAudioLink.h"
#include "CCheckedObject.h"
#include "CKernelContext.h"

#include <algorithm>
#include <initializer_list>

namespace qel {

class CAudioProcessSlots;

// Where a module instance stands: the channels it works on, their group, and the stream's rate.
struct CAudioModulePlace
{
    CInlineArray<int, 8> channels;
    CInlineArray<const CAudioStreamFormat*, 8> outputFormats; // by channel
    int group = 0;
    double sampleRateHz = 44100.0;

    // True if an instance that stands there could go on here.
    bool isSameFor(const CAudioModulePlace& other) const
    {
        return group == other.group && sampleRateHz == other.sampleRateHz &&
               std::equal(channels.begin(), channels.end(), other.channels.begin(), other.channels.end());
    }
};

// One step of one module instance. Inputs are borrowed until the step ends; an output is handed over with one
// reference.
class CAudioModuleStep
{
public:
    CAudioModuleStep(CKernelContext& context, int samples, std::size_t channels)
        : kernels(context), count(samples), channelCount(channels)
    {
        // One by one: for the one channel of most, a call of memset would cost more than all the rest.
        for (std::size_t i = 0; i < channels; ++i) {
            outputs.push({});
        }
    }
    // The same step for a second instance.
    CAudioModuleStep(const CAudioModuleStep& other)
        : CAudioModuleStep(other.kernels, other.count, other.channelCount)
    {
        inputs = other.inputs;
    }
    CAudioModuleStep& operator=(const CAudioModuleStep&) = delete;

    // Samples of one channel (0 is the instance's first) at an input port.
    CBufferRef input(int port, int channel = 0) const
    {
        return inputs[static_cast<std::size_t>(port) * channelCount + static_cast<std::size_t>(channel)];
    }
    // A fresh buffer of the step's length.
    CBufferRef allocate() const { return kernels.allocateSamples(static_cast<std::size_t>(count)); }
    // Runs a kernel over the step's samples.
    void submit(EKernel kernel, double scalar, std::initializer_list<CBufferRef> operands)
    {
        kernels.submit(kernel, static_cast<std::uint32_t>(count), scalar, operands);
    }
    void submit(int kernelId, double scalar, std::initializer_list<CBufferRef> operands)
    {
        kernels.submit(kernelId, static_cast<std::uint32_t>(count), scalar, operands);
    }
    // The input itself is the output: no copy, one more reference.
    void passThrough(int channel = 0)
    {
        kernels.addRef(input(0, channel));
        setOutput(input(0, channel), channel);
    }
    void setOutput(CBufferRef buffer, int channel = 0)
    {
        outputs[static_cast<std::size_t>(channel)] = buffer;
    }

    CKernelContext& kernels;
    const int count;
    const std::size_t channelCount;
    // Room for the 8 channels of a group, and for the ports of the modules that take that many.
    CInlineArray<CBufferRef, 16> inputs; // [port][channel]
    CInlineArray<CBufferRef, 8> outputs; // [channel]
};

// A module instance: the state of one effect on one channel, or on the channels of one group. It names its
// operands and submits kernels; it never touches samples itself. Made and owned by its terminal process.
// Audio thread.
//
// With kHasFixedCalls, settings change what stands in its one state, stateRef(), and neither which kernels a
// step runs nor their operands and scalars.
//
// A concrete module has besides: a value type `Settings` with ==, all that its parameters mean; static
// `Settings readSettings(const CAudioProcessSlots&, const CAudioModulePlace&)`; `void configure(const
// Settings&, const CAudioModulePlace&)`, which changes a running instance at once; and `void
// process(CAudioModuleStep&)`.
class CAudioModule : public CCheckedObject
{
public:
    static constexpr bool kHasFixedCalls = false;

    virtual void resolveKernels(CKernelContext& kernels) = 0;
    // This instance replaces `running`: it has been configured and now takes over the running signal state.
    virtual void takeUp(CAudioModule& running) { (void)running; }
    // Clears the signal state.
    virtual void reset() {}
};

// A module that does more in a step than kernel calls in proportion to its length, and puts nothing out: a
// plan runs it as a whole.
class CAudioWholeModule : public CAudioModule
{
public:
    virtual void process(CAudioModuleStep& step) = 0;
};

} // namespace qel
