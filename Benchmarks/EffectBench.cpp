// The whole effect: time for each stereo frame, the part of the kernels in it, and what an instance costs.
#include "Effect/EffectRig.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <malloc.h>
#include <memory>

namespace qel {
namespace {

using namespace test;

// Time that this thread has had, so that others on the machine count for nothing.
struct Clock
{
    using duration = std::chrono::nanoseconds;

    static duration now()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + duration(time.tv_nsec);
    }
};

enum ELoad : int
{
    kDefaults,
    kEverything,
    kEightGroups // everything, on eight channels in a group each
};

// Arguments: load, block size, oversampling (1 to 4 for 1x to 8x).
std::unique_ptr<EffectHost> prepare(const benchmark::State& state)
{
    const auto load = static_cast<ELoad>(state.range(0));
    auto host = std::make_unique<EffectHost>();
    host->set("denorm-enable", 1.0);
    host->set("oversampling", static_cast<double>(state.range(2)));
    const int groups = load == kEightGroups ? 8 : 1;
    for (int group = 0; load != kDefaults && group < groups; ++group) {
        host->apply(busySettings(), group);
    }
    if (load == kEightGroups) {
        host->setList("io-params.in-routing", {1, 2, 3, 4, 5, 6, 7, 8});
        host->setList("io-params.out-routing", {1, 2, 3, 4, 5, 6, 7, 8});
        host->setList("io-params.grouping", {0, 1, 2, 3, 4, 5, 6, 7});
    }
    host->open(48000.0, load == kEightGroups ? 8 : 2);
    return host;
}

double nanoseconds(Clock::duration time)
{
    return static_cast<double>(time.count());
}

// The application ends with the benchmark: others build trees without one.
//
// Blocks and replays of one block's kernels take turns, so that both see the same machine.
void wholeEffect(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    const std::unique_ptr<EffectHost> host = prepare(state);
    const auto count = static_cast<std::size_t>(state.range(1));
    const std::size_t channels = state.range(0) == kEightGroups ? 8 : 2;
    const Signals input(channels, music(48000.0, count, 1));
    const std::vector<int> sizes{static_cast<int>(count)};
    for (std::size_t i = 0; i < 48000; i += count) {
        host->run<double>(input, sizes);
    }
    CKernelRecording recording;
    host->kernels().setObserver(&recording);
    host->run<double>(input, sizes);
    host->kernels().setObserver(nullptr);
    recording.resolve(host->kernels());

    Signals output = input;
    std::vector<const void*> in;
    std::vector<void*> out;
    for (std::size_t i = 0; i < channels; ++i) {
        in.push_back(input[i].data());
        out.push_back(output[i].data());
    }
    CAudioHostBlock block{in.data(), out.data(), static_cast<int>(count), true};
    Clock::duration whole{};
    Clock::duration kernels{};
    constexpr int kBlocks = 16; // a turn
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < kBlocks; ++i) {
            host->processBlock(block);
        }
        const auto middle = Clock::now();
        for (int i = 0; i < kBlocks; ++i) {
            recording.replay();
        }
        whole += middle - start;
        kernels += Clock::now() - middle;
    }
    const double frames = static_cast<double>(state.iterations()) * kBlocks * static_cast<double>(count);
    state.counters["ns/frame"] = nanoseconds(whole) / frames;
    state.counters["kernels %"] = 100.0 * nanoseconds(kernels) / nanoseconds(whole);
    state.counters["calls"] = static_cast<double>(recording.calls().size());
}

BENCHMARK(wholeEffect)
    ->ArgNames({"load", "block", "os"})
    ->ArgsProduct({{kDefaults, kEverything, kEightGroups}, {64, 512}, {1, 4}})
    ->Unit(benchmark::kMicrosecond);

void makeInstance(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    for (auto _ : state) {
        EffectHost host;
        host.open(48000.0);
        benchmark::DoNotOptimize(host.getLatencySamples());
    }
}

BENCHMARK(makeInstance)->Unit(benchmark::kMillisecond);

// Heap of instances that have played, with everything on; the shared tree stands before.
void instanceMemory(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    const auto used = [] {
        const auto info = mallinfo2();
        return static_cast<double>(info.uordblks + info.hblkhd);
    };
    constexpr int kCount = 8;
    double fresh = 0.0;
    double warm = 0.0;
    for (auto _ : state) {
        std::vector<std::unique_ptr<EffectHost>> hosts;
        const double before = used();
        for (int i = 0; i < kCount; ++i) {
            hosts.push_back(std::make_unique<EffectHost>());
            hosts.back()->open(48000.0);
        }
        fresh = (used() - before) / kCount;
        for (const auto& host : hosts) {
            host->apply(busySettings());
            host->set("oversampling", static_cast<double>(state.range(0)));
            const Signals input(2, music(48000.0, 4800, 1));
            host->run<double>(input, {512});
        }
        warm = (used() - before) / kCount;
    }
    state.counters["fresh KiB"] = fresh / 1024.0;
    state.counters["warm KiB"] = warm / 1024.0;
}

BENCHMARK(instanceMemory)->Arg(1)->Arg(4)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace qel
