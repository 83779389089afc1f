// Time of each kernel, of submission around it, and of the same calls without it.
#include "CKernelContext.h"
#include "GraphHost/CKernelRecording.h"
#include "RealFft.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace qel {
namespace {

constexpr std::size_t kMaxCount = 512;

// Runs the benchmark's loop and reports "ns/sample".
template <class Function>
void timePerSample(benchmark::State& state, std::size_t samplesPerIteration, Function function)
{
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        function();
        benchmark::ClobberMemory();
    }
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    const double samples = static_cast<double>(samplesPerIteration) * static_cast<double>(state.iterations());
    state.counters["ns/sample"] = elapsed.count() / samples;
}

struct Rig
{
    // Random signs: sums, products and filters of it neither die away into denormals nor grow without bound.
    CBufferRef signal(std::size_t count)
    {
        const CBufferRef ref = context->allocateSamples(count);
        std::uint32_t random = 1;
        for (std::size_t i = 0; i < count; ++i) {
            random = random * 30013 + 30011;
            context->samples(ref)[i] = (random >> 23) % 2 == 0 ? 1.0 : -1.0;
        }
        return ref;
    }
    void time(benchmark::State& state, int kernel, double scalar, const std::vector<CBufferRef>& operands,
              std::uint32_t count)
    {
        timePerSample(state, count, [&] { context->submit(kernel, count, scalar, operands); });
    }

    std::unique_ptr<CKernelContext> context = std::make_unique<CKernelContext>();
};

// Any kernel all of whose operands are signals.
void timePlain(benchmark::State& state, const std::string& name)
{
    Rig rig;
    const int kernel = rig.context->findShortName(name);
    std::vector<CBufferRef> operands;
    for (int i = 0; i < rig.context->registry().entry(kernel)->operandCount; ++i) {
        operands.push_back(rig.signal(2 * kMaxCount));
    }
    rig.time(state, kernel, 1.0, operands, static_cast<std::uint32_t>(state.range(0)));
}

void timeCrossfade(benchmark::State& state)
{
    Rig rig;
    const CBufferRef fade = rig.signal(3);
    rig.context->submit(EKernel::kXfadeI, 662, 0, {fade});
    rig.time(state, rig.context->kernel(EKernel::kXfade), 0,
             {rig.signal(kMaxCount), fade, rig.signal(kMaxCount), rig.signal(kMaxCount)},
             static_cast<std::uint32_t>(state.range(0)));
}

void timeNoise(benchmark::State& state, const std::string& name)
{
    Rig rig;
    const int kernel = rig.context->findShortName(name);
    std::vector<CBufferRef> operands = {rig.signal(kMaxCount), rig.signal(1), rig.signal(kMaxCount)};
    operands.resize(static_cast<std::size_t>(rig.context->registry().entry(kernel)->operandCount));
    rig.time(state, kernel, 0, operands, static_cast<std::uint32_t>(state.range(0)));
}

void timeFilter(benchmark::State& state, EFilterFamily family)
{
    Rig rig;
    const CFilterKernels& kernels = rig.context->filterKernels(family);
    const CBufferRef filter = rig.context->allocate(static_cast<std::size_t>(kernels.stateBytes));
    const CBufferRef coefficients = rig.signal(16);
    for (std::size_t i = 0; i < 16; ++i) {
        rig.context->samples(coefficients)[i] = 0.05 * static_cast<double>(i + 1);
    }
    rig.context->submit(kernels.init, 0, 0, {filter, coefficients});
    rig.time(state, kernels.gainRun, 0.5, {rig.signal(kMaxCount), filter, rig.signal(kMaxCount)},
             static_cast<std::uint32_t>(state.range(0)));
}

// A forward and an inverse transform.
void timeTransform(benchmark::State& state)
{
    Rig rig;
    const auto length = static_cast<std::uint32_t>(state.range(0));
    const CBufferRef data = rig.signal(length);
    const CBufferRef work = rig.context->allocate(realFftWorkSize(length) * sizeof(std::int32_t));
    const CBufferRef roots = rig.context->allocateSamples(realFftRootsSize(length));
    std::memset(rig.context->address(work), 0, sizeof(std::int32_t));
    const int forward = rig.context->findShortName("rdftf");
    const int inverse = rig.context->findShortName("rdfti");
    timePerSample(state, length, [&] {
        rig.context->submit(forward, length, 0, {data, work, roots});
        rig.context->submit(inverse, length, 0, {data, work, roots});
    });
}

// What a call costs beside its arithmetic: empty calls, each with a buffer taken and given back.
void timeEmptySubmission(benchmark::State& state)
{
    Rig rig;
    const CBufferRef in = rig.signal(kMaxCount);
    for (auto _ : state) {
        const CBufferRef out = rig.context->allocateSamples(kMaxCount);
        rig.context->submit(EKernel::kAdd2, 0, 0, {out, in, in});
        rig.context->release(out);
    }
}

void timeEmptyReplay(benchmark::State& state)
{
    Rig rig;
    CKernelRecording recording;
    rig.context->setObserver(&recording);
    const CBufferRef in = rig.signal(kMaxCount);
    rig.context->submit(EKernel::kAdd2, 0, 0, {rig.signal(kMaxCount), in, in});
    rig.context->setObserver(nullptr);
    for (auto _ : state) {
        recording.replay();
        benchmark::ClobberMemory();
    }
}

constexpr const char* kPlainKernels[] = {
    "copy",    "addc",    "addcid", "add2",    "add2i",  "add3",    "add4",     "sub2",  "max2",
    "max2i",   "max3",    "max4",   "min2",    "min3",   "min4",    "mix",      "mix2",  "mixb",
    "add2mul", "add3mul", "mulc",   "mulci",   "mul2",   "mul2i",   "mul2addi", "abs",   "sqrt",
    "fill0",   "fillc",   "filld",  "interp2", "decim2", "decim2s", "msenc",    "msdec",
};

struct FilterRow
{
    const char* name;
    EFilterFamily family;
};
constexpr FilterRow kFilters[] = {
    {"biquad common", EFilterFamily::kBiquadCommon}, {"biquad low-pass", EFilterFamily::kBiquadLowPass},
    {"biquad notch", EFilterFamily::kBiquadNotch},   {"low-pass 1", EFilterFamily::kLowPass1},
    {"low-pass 2", EFilterFamily::kLowPass2},        {"low-pass 3", EFilterFamily::kLowPass3},
    {"low-pass 4", EFilterFamily::kLowPass4},        {"high-pass 1", EFilterFamily::kHighPass1},
    {"high-pass 4", EFilterFamily::kHighPass4},      {"half-band 2", EFilterFamily::kHalfBand2},
    {"half-band 4", EFilterFamily::kHalfBand4},      {"half-band 6", EFilterFamily::kHalfBand6},
    {"half-band 8", EFilterFamily::kHalfBand8},      {"half-band 10", EFilterFamily::kHalfBand10},
    {"half-band 12", EFilterFamily::kHalfBand12},    {"half-band 14", EFilterFamily::kHalfBand14},
    {"half-band 16", EFilterFamily::kHalfBand16},    {"all-pass chain", EFilterFamily::kAllPassChain},
};

template <class Function>
void add(const std::string& name, Function function)
{
    benchmark::RegisterBenchmark(("Kernel/" + name).c_str(), function)->Arg(64)->Arg(kMaxCount);
}

const bool isRegistered = [] {
    for (const std::string name : kPlainKernels) {
        add(name, [name](benchmark::State& state) { timePlain(state, name); });
    }
    for (const FilterRow& row : kFilters) {
        add(row.name, [row](benchmark::State& state) { timeFilter(state, row.family); });
    }
    for (const std::string name : {"denorm", "denormn"}) {
        add(name, [name](benchmark::State& state) { timeNoise(state, name); });
    }
    add("xfade", timeCrossfade);
    add("rdftf and rdfti", timeTransform);
    benchmark::RegisterBenchmark("Submission/empty", timeEmptySubmission);
    benchmark::RegisterBenchmark("Submission/replay of empty", timeEmptyReplay);
    return true;
}();

} // namespace
} // namespace qel
