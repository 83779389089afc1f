// What the graph costs around its kernels: one block through a 40-process graph against the replay of the
// kernel calls that the same block makes.
#include "CKernelContext.h"
#include "GraphHost/CKernelRecording.h"
#include "GraphRig.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace qel {
namespace {

using test::Channels;
using test::GraphRig;

// Ten rows of four processes: two gains in series beside an absolute value, joined by a mix.
std::string fortyProcesses()
{
    std::string content;
    std::string links;
    std::string previous = "*";
    for (int row = 0; row < 10; ++row) {
        const std::string n = std::to_string(row);
        const auto gain = [&](const std::string& name) {
            return "<audio:modGain name=\"" + name + R"("><audio:param-alloc param-name="gain" index="0"/>
              <audio:param name="gain" converter="real" min-values="0" max-values="2" def-values="0.9"/></audio:modGain>)";
        };
        content += gain("g" + n) + gain("h" + n) + "<audio:modAbs name=\"a" + n +
                   "\"/><audio:modMix name=\"m" + n +
                   R"("><audio:param-alloc param-name="mix" index="0"/>
              <audio:param name="mix" converter="real" min-values="0" max-values="1" def-values="0.5"/></audio:modMix>)";
        const auto link = [&](const std::string& from, const std::string& to) {
            links += "<audio:process-link src=\"" + from + "\" dst=\"" + to + "\"/>";
        };
        link(previous, "g" + n);
        link("g" + n, "h" + n);
        link(previous, "a" + n);
        link("h" + n, "m" + n);
        link("a" + n, "m" + n + "/1");
        previous = "m" + n;
    }
    links += "<audio:process-link src=\"" + previous + "\" dst=\"*\"/>";
    return R"(<audio:process-def name="main" is-auto-links="false">)" + content + links +
           "</audio:process-def>";
}

using Clock = std::chrono::steady_clock;

// The middle one of the times, in microseconds: what other programs of the machine take now and then does not
// count.
double median(std::vector<Clock::duration>& times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return std::chrono::duration<double, std::micro>(*middle).count();
}

// Blocks and replays take turns, so that both see the same machine.
void graphOverhead(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    GraphRig graph(fortyProcesses());
    const Channels input(2, std::vector<double>(static_cast<std::size_t>(count), 0.25));
    CKernelRecording recording;
    for (int i = 0; i < 10; ++i) {
        graph.runBlock(input, 0, count);
        graph.discard();
    }
    graph.kernels().setObserver(&recording);
    graph.runBlock(input, 0, count);
    graph.discard();
    graph.kernels().setObserver(nullptr);
    recording.resolve(graph.kernels());

    std::vector<Clock::duration> blocks;
    std::vector<Clock::duration> replays;
    for (auto _ : state) {
        const auto start = Clock::now();
        graph.runBlock(input, 0, count);
        graph.discard();
        const auto middle = Clock::now();
        recording.replay();
        blocks.push_back(middle - start);
        replays.push_back(Clock::now() - middle);
    }
    const double inKernels = median(replays);
    const double inGraph = median(blocks) - inKernels;
    state.counters["graph us"] = inGraph;
    state.counters["kernels us"] = inKernels;
    state.counters["graph/kernels %"] = 100.0 * inGraph / inKernels;
}

BENCHMARK(graphOverhead)->Arg(64)->Arg(512)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace qel
