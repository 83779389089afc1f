// The whole effect: its time for each frame, held against one plain loop of the same, and what an instance
// costs.
#include "CAudioExtParam.h"
#include "CPlainEffect.h"
#include "Effect/EffectRig.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <malloc.h>
#include <memory>
#include <numeric>

namespace qel {
namespace {

using namespace test;

constexpr double kRateHz = 48000.0;

// Nanoseconds that this thread has had, so that others on the machine count for nothing.
double threadTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

double median(std::vector<double> times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// Anything that turns blocks into blocks, playing the same second of music over and over. `process` gets
// inputs, outputs and a count.
template <class Process>
class Player
{
public:
    Player(std::size_t channels, std::size_t blockSize, Process process)
        : process_(std::move(process)), blockSize_(blockSize)
    {
        for (unsigned i = 0; i < channels; ++i) {
            input_.push_back(music(kRateHz, 48000 / blockSize * blockSize, 1 + i % 2));
        }
        output_ = input_;
    }

    void playBlock()
    {
        in_.clear();
        out_.clear();
        for (std::size_t i = 0; i < input_.size(); ++i) {
            in_.push_back(input_[i].data() + position_);
            out_.push_back(output_[i].data() + position_);
        }
        process_(in_.data(), out_.data(), blockSize_);
        position_ = (position_ + blockSize_) % input_[0].size();
    }
    void playAll()
    {
        do {
            playBlock();
        } while (position_ != 0);
    }
    // Nanoseconds a frame, of about 10 ms.
    double timeTurn()
    {
        const std::size_t blocks = std::max<std::size_t>(512 / blockSize_, 1);
        const double start = threadTime();
        for (std::size_t i = 0; i < blocks; ++i) {
            playBlock();
        }
        return (threadTime() - start) / static_cast<double>(blocks * blockSize_);
    }
    std::size_t blocks() const { return input_[0].size() / blockSize_; }
    const Signals& output() const { return output_; }

private:
    Process process_;
    std::size_t blockSize_;
    Signals input_;
    Signals output_;
    std::vector<const double*> in_;
    std::vector<double*> out_;
    std::size_t position_ = 0;
};

auto playerOf(EffectHost& host, std::size_t blockSize, std::size_t channels = 2)
{
    const auto process = [&host](const double** in, double** out, std::size_t count) {
        CAudioHostBlock block{reinterpret_cast<const void**>(in), reinterpret_cast<void**>(out),
                              static_cast<int>(count), true};
        host.processBlock(block);
    };
    return Player(channels, blockSize, process);
}

// `mode` of the oversampling: 1 to 4 for 1x to 8x.
std::unique_ptr<EffectHost> openHost(bool hasEverything, int mode, int groups = 1)
{
    auto host = std::make_unique<EffectHost>();
    host->set("denorm-enable", 1.0);
    host->set("oversampling", mode);
    for (int group = 0; hasEverything && group < groups; ++group) {
        host->apply(busySettings(), group);
    }
    if (groups == 8) {
        host->setList("io-params.in-routing", {1, 2, 3, 4, 5, 6, 7, 8});
        host->setList("io-params.out-routing", {1, 2, 3, 4, 5, 6, 7, 8});
        host->setList("io-params.grouping", {0, 1, 2, 3, 4, 5, 6, 7});
    }
    host->open(kRateHz, groups == 8 ? 8 : 2);
    return host;
}

// Turns of both until the benchmark has enough, so that both see the same machine. The medians.
template <class First, class Second>
std::pair<double, double> playInTurns(benchmark::State& state, First& first, Second& second)
{
    std::vector<double> firstTimes;
    std::vector<double> secondTimes;
    for (auto _ : state) {
        firstTimes.push_back(first.timeTurn());
        secondTimes.push_back(second.timeTurn());
    }
    return {median(firstTimes), median(secondTimes)};
}

constexpr double kMostDifference = 1e-6; // -120 dB of full scale

// The application ends with the benchmark: others build trees without one.
void wholeEffect(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    const bool hasEverything = state.range(0) != 0;
    const auto blockSize = static_cast<std::size_t>(state.range(1));
    const int mode = static_cast<int>(state.range(2));
    const std::unique_ptr<EffectHost> host = openHost(hasEverything, mode);
    auto engine = playerOf(*host, blockSize);
    CPlainEffect effect(kRateHz, mode - 1, hasEverything);
    Player plain(2, blockSize,
                 [&](const double** in, double** out, std::size_t count) { effect.process(in, out, count); });
    engine.playAll();
    plain.playAll();
    for (std::size_t i = 0; i < 2; ++i) {
        if (!(worstDifference(engine.output()[i], plain.output()[i]) < kMostDifference)) {
            state.SkipWithError("engine and plain loop differ by more than -120 dB");
            return;
        }
    }
    const auto [engineTime, plainTime] = playInTurns(state, engine, plain);
    state.counters["ns/frame"] = engineTime;
    state.counters["plain"] = plainTime;
    state.counters["x plain"] = engineTime / plainTime;
}

BENCHMARK(wholeEffect)
    ->ArgNames({"everything", "block", "os"})
    ->ArgsProduct({{0, 1}, {16, 64, 512}, {1, 4}})
    ->Unit(benchmark::kMicrosecond);

// Everything on, on eight channels in a group each.
void eightGroups(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    const auto blockSize = static_cast<std::size_t>(state.range(0));
    const std::unique_ptr<EffectHost> host = openHost(true, 1, 8);
    const std::unique_ptr<EffectHost> oneGroup = openHost(true, 1);
    auto engine = playerOf(*host, blockSize, 8);
    auto reference = playerOf(*oneGroup, blockSize);
    engine.playAll();
    reference.playAll();
    const auto [time, referenceTime] = playInTurns(state, engine, reference);
    state.counters["ns/frame"] = time;
    state.counters["one group"] = referenceTime;
    state.counters["x one group"] = time / referenceTime;
}

BENCHMARK(eightGroups)->ArgName("block")->Arg(64)->Arg(512)->Unit(benchmark::kMicrosecond);

// Everything on, with a value for each of the host's parameters before every block of 64: knobs move by a
// hundredth of their way and back, switches are sent as they are.
void automation(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    constexpr std::size_t kBlock = 64;
    const std::unique_ptr<EffectHost> host = openHost(true, 1);
    const std::unique_ptr<EffectHost> still = openHost(true, 1);
    auto unmoved = playerOf(*still, kBlock);
    auto engine = playerOf(*host, kBlock);
    engine.playAll();
    unmoved.playAll();
    std::vector<double> times;
    std::vector<double> stillTimes;
    struct Automated
    {
        CAudioExtParam* param;
        bool isKnob;
        double norm; // that it began with
    };
    std::vector<Automated> params;
    for (std::int32_t i = 0; i < host->getExtParams().getCount(); ++i) {
        CAudioExtParam* const param = host->getExtParams().get(i);
        const double norm = param->getNormalized();
        const bool isKnob = param->getStepCount() == 0;
        params.push_back({param, isKnob, isKnob ? std::clamp(norm, 0.01, 0.99) : norm});
    }
    constexpr int kWay = 100; // blocks
    int block = 0;
    for (auto _ : state) {
        block = (block + 1) % kWay;
        const double moved = 0.01 * std::abs(2 * block - kWay) / kWay;
        const double start = threadTime();
        for (const auto& [param, isKnob, norm] : params) {
            param->postNormalized(isKnob ? norm + moved : norm);
        }
        engine.playBlock();
        const double middle = threadTime();
        unmoved.playBlock();
        times.push_back(middle - start);
        stillTimes.push_back(threadTime() - middle);
    }
    state.counters["parameters"] = static_cast<double>(params.size());
    // The median leaves out the blocks in which fades end: one in eleven.
    const auto mean = [](const std::vector<double>& all) {
        return std::accumulate(all.begin(), all.end(), 0.0) / static_cast<double>(all.size());
    };
    state.counters["mean"] = mean(times) / kBlock;
    state.counters["x mean"] = mean(times) / mean(stillTimes);
    state.counters["ns/frame"] = median(times) / kBlock;
    state.counters["unmoved"] = median(stillTimes) / kBlock;
    state.counters["x unmoved"] = median(times) / median(stillTimes);
}

BENCHMARK(automation)->Unit(benchmark::kMicrosecond);

// What a block takes at most: of 20 passes over the same music each block has its best, which leaves out what
// came from elsewhere.
void slowestBlock(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    const std::unique_ptr<EffectHost> host = openHost(state.range(0) != 0, 1);
    auto engine = playerOf(*host, static_cast<std::size_t>(state.range(1)));
    engine.playAll();
    for (auto _ : state) {
        std::vector<double> best(engine.blocks(), INFINITY);
        constexpr int kPasses = 20;
        for (int pass = 0; pass < kPasses; ++pass) {
            for (double& time : best) {
                const double start = threadTime();
                engine.playBlock();
                time = std::min(time, threadTime() - start);
            }
        }
        const double slowest = *std::max_element(best.begin(), best.end());
        state.counters["slowest us"] = slowest / 1000.0;
        state.counters["x median"] = slowest / median(best);
    }
}

BENCHMARK(slowestBlock)
    ->ArgNames({"everything", "block"})
    ->ArgsProduct({{0, 1}, {64, 512}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// The time is that of a life, from nothing to nothing; the counter leaves out the end of it.
void makeInstance(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    std::vector<double> times;
    for (auto _ : state) {
        const double start = threadTime();
        TestHost host;
        requireOk(host.init());
        requireOk(host.finishInit());
        host.start();
        benchmark::DoNotOptimize(host.getLatencySamples());
        times.push_back(threadTime() - start);
    }
    state.counters["made ms"] = 1e-6 * median(times);
}

BENCHMARK(makeInstance)->Unit(benchmark::kMillisecond);

// Heap of instances that are made, started, and have played with everything on; the shared tree stands
// before.
void instanceMemory(benchmark::State& state)
{
    const TestApplication application(deliveredTree());
    const auto used = [] {
        const auto info = mallinfo2();
        return static_cast<double>(info.uordblks + info.hblkhd);
    };
    constexpr int kCount = 8;
    double made = 0.0;
    double started = 0.0;
    double played = 0.0;
    for (auto _ : state) {
        std::vector<std::unique_ptr<EffectHost>> hosts;
        const double before = used();
        for (int i = 0; i < kCount; ++i) {
            hosts.push_back(std::make_unique<EffectHost>());
        }
        made = (used() - before) / kCount;
        for (const auto& host : hosts) {
            host->open(48000.0);
        }
        started = (used() - before) / kCount;
        for (const auto& host : hosts) {
            host->apply(busySettings());
            host->set("oversampling", static_cast<double>(state.range(0)));
            const Signals input(2, music(48000.0, 4800, 1));
            host->run<double>(input, {512});
        }
        played = (used() - before) / kCount;
    }
    state.counters["made KiB"] = made / 1024.0;
    state.counters["started KiB"] = started / 1024.0;
    state.counters["played KiB"] = played / 1024.0;
}

BENCHMARK(instanceMemory)->Arg(1)->Arg(4)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace qel
