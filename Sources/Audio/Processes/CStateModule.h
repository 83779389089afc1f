// Base of the modules that are one kernel family with a state record.
#pragma once

#include "CAudioModule.h"
#include "CKernelState.h"

#include <string>

namespace qel {

// A channel of signal through the kernel `family`, whose state lives in one record. Of the family's other
// kernels ("i" initialises from the record's parameters, "u" takes over a running state, "c" clears the
// signal) those that do not exist are not called. A derived module writes its settings into the record and
// calls begin(), or beginOrGoOn() where the family has an update; more than that only where it runs more than
// one kernel.
template <class State>
class CStateModule : public CAudioModule
{
public:
    static constexpr int kInputPorts = 1;

    CStateModule(CKernelContext& kernels, const char* family)
        : kernels_(kernels), state_(kernels), family_(family)
    {}

    void resolveKernels(CKernelContext& kernels) override
    {
        const std::string name = family_;
        runKernel_ = kernels.findShortName(name);
        initKernel_ = kernels.findShortName(name + "i");
        updateKernel_ = kernels.findShortName(name + "u");
        clearKernel_ = kernels.findShortName(name + "c");
    }
    CBufferRef stateRef() const { return state_.ref(); }
    void reset() override { kernels_.submit(clearKernel_, 0, 0.0, {state_.ref()}); }
    void process(CAudioModuleStep& step)
    {
        const CBufferRef output = step.allocate();
        step.submit(runKernel_, 0.0, {output, state_.ref(), step.input(0)});
        step.setOutput(output);
    }

protected:
    // Null if the pool was exhausted.
    State* state() const { return state_.get(); }
    void begin(double sampleRateHz)
    {
        sampleRateHz_ = sampleRateHz;
        kernels_.submit(initKernel_, 0, sampleRateHz, {state_.ref()});
    }
    // An instance that has begun keeps its signal.
    void beginOrGoOn(double sampleRateHz)
    {
        sampleRateHz_ > 0.0 ? goOnFrom(*this, sampleRateHz) : begin(sampleRateHz);
    }
    // Takes over the running signal of `from`, which may be this one.
    void goOnFrom(const CStateModule& from, double sampleRateHz)
    {
        sampleRateHz_ = sampleRateHz;
        kernels_.submit(updateKernel_, 0, sampleRateHz, {state_.ref(), from.state_.ref()});
    }

    CKernelContext& kernels_;
    CKernelState<State> state_;
    double sampleRateHz_ = 0.0; // 0 until begun
    int runKernel_ = -1;
    int initKernel_ = -1;
    int updateKernel_ = -1;
    int clearKernel_ = -1;

private:
    const char* family_;
};

} // namespace qel
