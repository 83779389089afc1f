// A kernel with a state record, driven sample block by sample block.
#pragma once

#include "../Kernels/KernelRig.h"

#include <cmath>
#include <span>

namespace qel::test {

// Holds one state of a kernel family. Operands of `process` stand in the order out, state, in.
template <class State>
class StateRig
{
public:
    explicit StateRig(std::span<const CKernelDef> kernels)
    {
        rig_.context().addKernels(kernels);
        state_ = rig_.bytes(sizeof(State));
    }

    State& state() { return *static_cast<State*>(rig_.context().address(state_)); }
    KernelRig& rig() { return rig_; }
    CBufferRef stateRef() const { return state_; }

    void run(const std::string& name, double scalar = 0.0) { rig_.run(name, 0, scalar, {state_}); }
    Signal process(const std::string& name, const Signal& in)
    {
        const CBufferRef input = rig_.buffer(in);
        const CBufferRef output = rig_.context().allocateSamples(in.size());
        rig_.run(name, in.size(), 0.0, {output, state_, input});
        Signal out = rig_.read(output, in.size());
        rig_.context().release(output);
        rig_.context().release(input);
        return out;
    }
    Signal processInPlace(const std::string& name, const Signal& in)
    {
        const CBufferRef signal = rig_.buffer(in);
        rig_.run(name, in.size(), 0.0, {signal, state_});
        Signal out = rig_.read(signal, in.size());
        rig_.context().release(signal);
        return out;
    }
    // The same in pieces of 0 to 100 samples.
    Signal processSplit(const std::string& name, const Signal& in)
    {
        Signal out;
        std::size_t at = 0;
        for (const std::size_t length : randomSplit(in.size(), 7)) {
            const auto start = in.begin() + static_cast<std::ptrdiff_t>(at);
            const Signal piece = process(name, Signal(start, start + static_cast<std::ptrdiff_t>(length)));
            out.insert(out.end(), piece.begin(), piece.end());
            at += length;
        }
        return out;
    }

private:
    KernelRig rig_;
    CBufferRef state_;
};

// The gain of a one-pole follower, in long double so that it is no copy of what is tested.
inline double referenceOnePoleGain(double w)
{
    const long double x = 2.0L - std::cos(static_cast<long double>(std::fmin(w, 3.14159265358979323846)));
    return static_cast<double>(1.0L + std::sqrt(x * x - 1.0L) - x);
}

inline constexpr double kReferencePi = 3.14159265358979323846;

inline Signal sineSignal(std::size_t count, double frequencyHz, double sampleRateHz, double amplitude = 1.0)
{
    Signal signal(count);
    for (std::size_t i = 0; i < count; ++i) {
        signal[i] =
            amplitude * std::sin(2.0 * kReferencePi * frequencyHz * static_cast<double>(i) / sampleRateHz);
    }
    return signal;
}

// A level that jumps up at random and falls back, as the rectified signal of drums does.
inline Signal beats(std::size_t count, unsigned seed)
{
    Signal signal = noiseSignal(count, seed);
    double level = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        level = i % 1500 == 200 ? 1.0 : level * 0.998;
        signal[i] = std::fabs(signal[i]) * level;
    }
    return signal;
}

// Largest difference, relative to the largest value expected.
inline double worstDifference(const Signal& actual, const Signal& expected)
{
    double worst = actual.size() == expected.size() ? 0.0 : INFINITY;
    double largest = 0.0;
    for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
        const double difference = std::fabs(actual[i] - expected[i]);
        worst = difference <= worst ? worst : std::isnan(difference) ? INFINITY : difference;
        largest = std::max(largest, std::fabs(expected[i]));
    }
    return largest > 0.0 ? worst / largest : worst;
}

inline bool isAllFinite(const Signal& signal)
{
    return std::all_of(signal.begin(), signal.end(), [](double v) { return std::isfinite(v); });
}

// How many of the doubles that begin at `first` are denormal.
inline int denormalCount(const double* first, std::size_t count)
{
    return static_cast<int>(
        std::count_if(first, first + count, [](double v) { return std::fpclassify(v) == FP_SUBNORMAL; }));
}

// The noise that the graph adds to its input.
inline Signal antiDenormalNoise(std::size_t count, unsigned seed)
{
    Signal signal = noiseSignal(count, seed);
    for (double& v : signal) {
        v = std::copysign(1e-11, v);
    }
    return signal;
}

} // namespace qel::test
