// Kernels that do the work of several calls, against those calls.
#include "Kernels/KernelCalls.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <numbers>
#include <vector>

namespace qel {
namespace {

using namespace test;

// Nanoseconds that this thread has had.
double threadTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

double median(std::vector<double>& times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// A decaying beat at 60 Hz, or the level of one: branches go as they do in music.
Signal beat(bool isLevel)
{
    Signal signal(2 * kLongest);
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const auto n = static_cast<double>(i);
        signal[i] = std::exp(-n / 400.0) * std::sin(n * (2.0 * std::numbers::pi * 60.0 / kRateHz));
        signal[i] = isLevel ? std::fabs(signal[i]) : signal[i];
    }
    return signal;
}

// A turn of each in every iteration, so that both see the same machine; "ns/frame" counts samples of the
// lower rate.
void timeGroup(benchmark::State& state, std::span<const CKernelPart> parts, std::size_t channels,
               CKernelGroupFunction function)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    KernelCalls single(parts, channels, EChannels::kAlike, true);
    KernelCalls grouped(parts, channels, EChannels::kAlike, true);
    const std::string name = kernelsByFunction().at(parts[0].function).name;
    const Signal input = beat(name.starts_with("trans") || name.starts_with("crunch"));
    for (KernelCalls* calls : {&single, &grouped}) {
        calls->setCount(count);
        for (std::size_t channel = 0; channel < channels; ++channel) {
            calls->setInput(channel, input);
        }
    }
    std::vector<double> singleTimes;
    std::vector<double> groupTimes;
    constexpr int kTurns = 8;
    for (auto _ : state) {
        const double start = threadTime();
        for (int i = 0; i < kTurns; ++i) {
            single.runSingles();
        }
        const double middle = threadTime();
        for (int i = 0; i < kTurns; ++i) {
            grouped.run(function);
        }
        singleTimes.push_back(middle - start);
        groupTimes.push_back(threadTime() - middle);
    }
    const double frames = kTurns * static_cast<double>(count);
    const double before = median(singleTimes) / frames;
    const double after = median(groupTimes) / frames;
    state.counters["calls ns/frame"] = before;
    state.counters["one ns/frame"] = after;
    state.counters["times as fast"] = before / after;
}

const bool isRegistered = [] {
    const auto add = [](const std::string& name, std::span<const CKernelPart> parts, std::size_t channels,
                        CKernelGroupFunction function) {
        benchmark::RegisterBenchmark(
            ("Group/" + name + "/channels:" + std::to_string(channels)).c_str(),
            [=](benchmark::State& state) { timeGroup(state, parts, channels, function); })
            ->Arg(64)
            ->Arg(512);
    };
    // A part for each kernel, as long as the benchmarks may run.
    static std::vector<std::array<CKernelPart, 1>> alone;
    alone.reserve(kernelsByFunction().size());
    for (const auto& [function, kernel] : kernelsByFunction()) {
        if (kernel.pair) {
            const auto& part = alone.emplace_back(std::array{CKernelPart{function, CKernelPart::kInput}});
            add(kernel.name, part, 2, kernel.pair);
            if (kernel.quad && hasWideLanes()) {
                add(kernel.name, part, 4, kernel.quad);
            }
        }
        for (const CKernelJoin& join : kernel.joins) {
            add(nameOf(join.parts).substr(1), join.parts, 1, join.one);
            add(nameOf(join.parts).substr(1), join.parts, 2, join.pair);
            if (join.quad && hasWideLanes()) {
                add(nameOf(join.parts).substr(1), join.parts, 4, join.quad);
            }
        }
    }
    return true;
}();

} // namespace
} // namespace qel
