// Calls of kernels over memory of their own, for what does the work of several of them.
#pragma once

#include "../TestRate.h"

#include "CrunchKernels.h"
#include "KernelFamilies.h"
#include "KernelRig.h"
#include "MeterKernels.h"
#include "PShiftKernels.h"
#include "SatDRFKernels.h"
#include "TransKernels.h"

#include <map>
#include <stdexcept>

namespace qel::test {

inline constexpr std::size_t kLongest = 513; // samples of a call at the lowest rate
inline constexpr std::size_t kMostStages = 3;
inline const std::map<CKernelFunction, CKernelDef>& kernelsByFunction()
{
    static const auto kKernels = [] {
        std::map<CKernelFunction, CKernelDef> all;
        for (const auto table :
             {vectorKernels(), crossfadeKernels(), biquadKernels(), firstOrderKernels(), halfBandKernels(),
              allPassKernels(), resamplingKernels(), noiseKernels(), satDRFKernels(), crunchRlsKernels(),
              crunchAtkKernels(), transKernels(), pshiftKernels(), meterKernels()}) {
            for (const CKernelDef& kernel : table) {
                all.insert({kernel.function, kernel});
            }
        }
        return all;
    }();
    return kKernels;
}

inline CKernelFunction functionOf(const std::string& name)
{
    for (const auto& [function, kernel] : kernelsByFunction()) {
        if (kernel.name == name) {
            return function;
        }
    }
    throw std::runtime_error("no kernel " + name);
}

inline void runKernel(const std::string& name, double scalar, std::initializer_list<void*> operands)
{
    CKernelCall call{};
    call.scalar = scalar;
    std::copy(operands.begin(), operands.end(), call.data);
    functionOf(name)(call);
}

enum class EChannels
{
    kAlike,
    kDifferentValues,
    kDifferentModes,
};

// Calls over memory of their own, the same whenever they are made anew.
class KernelCalls
{
public:
    // Without `keepsBetween` what only passes from part to part has no address.
    KernelCalls(std::span<const CKernelPart> parts, std::size_t channels, EChannels kind, bool keepsBetween)
        : parts_(parts), channels_(channels), kind_(kind)
    {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const bool isOther = kind != EChannels::kAlike && channel == 1;
            double* const input = buffer();
            inputs_.push_back(input);
            std::vector<double*> outputs;
            for (std::size_t i = 0; i < parts.size(); ++i) {
                const CKernelDef& kernel = kernelsByFunction().at(parts[i].function);
                const bool isInner = std::any_of(parts.begin(), parts.end(), [&](const CKernelPart& part) {
                    return part.source == static_cast<int>(i) &&
                           !isInPlace(kernelsByFunction().at(part.function));
                });
                double* const source =
                    parts[i].source < 0 ? input : outputs[static_cast<std::size_t>(parts[i].source)];
                CKernelCall call{};
                call.scalar = isOther ? 0.4 : 0.7;
                if (isInPlace(kernel)) {
                    call.data[0] = source;
                } else {
                    call.data[0] = isInner && !keepsBetween ? nullptr : buffer();
                    call.data[kernel.operandCount - 1] = source;
                }
                outputs.push_back(call.samples(0));
                setUp(kernel, call, isOther, static_cast<unsigned>(10 * channel + i));
                calls_.push_back(call);
                if (!isInner) {
                    outputs_.push_back(call.samples(0));
                }
            }
        }
    }

    // Gives all calls their counts for `count` samples at the lowest rate, and the inputs seeded noise.
    void fill(std::size_t count, unsigned seed)
    {
        setCount(count);
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            setInput(channel, noiseSignal(2 * kLongest, seed + static_cast<unsigned>(channel)));
        }
    }
    void setInput(std::size_t channel, const Signal& signal)
    {
        std::copy(signal.begin(), signal.end(), inputs_[channel]);
    }
    void setCount(std::size_t count)
    {
        std::size_t rate = 1;
        for (const CKernelPart& part : parts_) {
            rate = kernelsByFunction().at(part.function).name == std::string("decim2") ? 2 : rate;
        }
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            const std::string name = kernelsByFunction().at(parts_[i].function).name;
            rate = name == "decim2" ? rate / 2 : rate;
            for (std::size_t channel = 0; channel < channels_; ++channel) {
                calls_[channel * parts_.size() + i].count = static_cast<std::uint32_t>(count * rate);
            }
            rate = name == "interp2" ? 2 * rate : rate;
        }
        written_ = count * rate;
    }
    void runSingles() const
    {
        for (std::size_t i = 0; i < calls_.size(); ++i) {
            parts_[i % parts_.size()].function(calls_[i]);
        }
    }
    // One part of each channel over whatever its input holds.
    void runPart(std::size_t part, std::uint32_t count)
    {
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            CKernelCall& call = calls_[channel * parts_.size() + part];
            call.count = count;
            parts_[part].function(call);
        }
    }
    void run(CKernelGroupFunction function) const { function(calls_.data()); }
    // All that is left for others to read.
    std::vector<Signal> outputs() const
    {
        std::vector<Signal> all;
        for (const double* output : outputs_) {
            all.emplace_back(output, output + written_);
        }
        return all;
    }

private:
    static bool isInPlace(const CKernelDef& kernel)
    {
        return (kernel.writeMask >> (kernel.operandCount - 1)) & 1;
    }
    double* buffer(std::size_t count = kLongest << kMostStages)
    {
        memory_.push_back(std::make_unique<double[]>(count));
        return memory_.back().get();
    }
    template <class Record>
    Record* record(CKernelCall& call)
    {
        call.data[1] = buffer(sizeof(Record) / sizeof(double) + 1);
        return new (call.data[1]) Record{};
    }
    void setUp(const CKernelDef& kernel, CKernelCall& call, bool isOther, unsigned seed)
    {
        std::string name = kernel.name;
        if (name == "interp2" || name == "decim2") {
            return;
        }
        if (name == "denorm" || name == "denormn") {
            *record<std::uint32_t>(call) = seed;
        } else if (name == "satdrf") {
            auto* state = record<SatDRFState>(call);
            state->parameters.mode = kind_ == EChannels::kDifferentValues || isOther
                                         ? SatDRFState::EMode::kPrecise
                                         : SatDRFState::EMode::kPumping;
            state->parameters.drive = isOther ? 2.0 : 6.0;
            state->parameters.phaseFreqHz = 100.0;
            runKernel("satdrfi", kRateHz, {state});
        } else if (name == "pshift") {
            auto* state = record<PShiftState>(call);
            state->grain = kind_ == EChannels::kDifferentModes && isOther ? 300 : 441;
            call.data[2] = buffer(PShiftState::ringSamples(state->grain));
            runKernel("pshifti", 0.0, {state, call.data[2]});
            state->headA += isOther ? 8 : 0;
        } else if (name.starts_with("trans")) {
            // The parts of a detector share one record.
            if (!calls_.empty() && parts_.size() > 1 && calls_.size() % parts_.size() != 0) {
                call.data[1] = calls_.back().data[1];
                return;
            }
            auto* state = record<TransState>(call);
            state->sense = 0.4;
            state->scale = isOther ? 1.0 : 2.0;
            state->timeSec = 0.01;
            state->decaySec = 0.03;
            runKernel("transi", kRateHz, {state});
        } else if (name == "crunchrls") {
            auto* state = record<CrunchRlsState>(call);
            state->releaseSec = isOther ? 0.02 : 0.05;
            state->drive = 8.0;
            state->isInverse = kind_ == EChannels::kDifferentModes && isOther;
            runKernel("crunchrlsi", kRateHz, {state});
        } else if (name == "crunchatk") {
            auto* state = record<CrunchAtkState>(call);
            state->attackSec = isOther ? 0.01 : 0.02;
            state->type = kind_ == EChannels::kDifferentValues ? CrunchAtkState::EType::kVariable
                                                               : CrunchAtkState::EType::kFixed;
            runKernel("crunchatki", kRateHz, {state});
        } else if (name.starts_with("flt")) {
            Signal coefficients = noiseSignal(16, seed);
            for (double& value : coefficients) {
                value = 0.25 + 0.15 * value; // stable for every family
            }
            call.data[1] = buffer(100);
            const std::string init = name.starts_with("fltbiq")   ? "fltbiqi"
                                     : name.starts_with("flthbf") ? name.substr(0, name.find('g')) + "i"
                                                                  : "fltlphp1i";
            runKernel(init, 0.0, {call.data[1], coefficients.data()});
        } else {
            throw std::runtime_error("no state for " + name);
        }
    }

    std::span<const CKernelPart> parts_;
    std::size_t channels_;
    EChannels kind_;
    std::vector<std::unique_ptr<double[]>> memory_;
    std::vector<CKernelCall> calls_;
    std::vector<double*> inputs_;
    std::vector<double*> outputs_;
    std::size_t written_ = 0;
};

inline std::string nameOf(std::span<const CKernelPart> parts)
{
    std::string name;
    for (const CKernelPart& part : parts) {
        name += std::string(" ") + kernelsByFunction().at(part.function).name;
    }
    return name;
}

} // namespace qel::test
