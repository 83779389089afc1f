// The filter module in a graph: what it does to a signal, and what it does when something changes.
#include "Processes/CModFilter.h"

#include "../Filters/FilterFixture.h"
#include "AllocationGuard.h"
#include "CGraphVisitor.h"
#include "GraphFixture.h"
#include "Kernels/CKernelRecording.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace qel {
namespace {

using test::Channels;

constexpr double kRateHz = 48000.0;

std::string slot(int number, const char* name, const char* defaults)
{
    return "<audio:param-alloc param-name=\"" + std::string(name) + "\" index=\"" + std::to_string(number) +
           "\"/><audio:param name=\"" + name +
           R"(" is-global="true" converter="real" min-values="-100000" )" +
           R"(max-values="100000" def-values=")" + defaults + "\"/>";
}

// A filter "f" with the slots index, freq, gain and bw, and a slot `count` without a parameter.
std::string filter(const char* array, const char* index, const char* freq, const char* attributes = "")
{
    return std::string("<audio:modFilter name=\"f\" gen-array=\"audio.fltarray.") + array + "\" " +
           attributes + R"(><audio:param-alloc param-name="count" index="0"/>)" + slot(1, "index", index) +
           slot(2, "freq", freq) + slot(3, "gain", "1") + slot(4, "bw", "0.7071") + "</audio:modFilter>";
}

constexpr const char* kSmooth = R"(is-smooth-update="true" xfade-length="0.01")";

// Runs a chain of modules on top of the delivered filters.
class FilterGraph : public tools::CGraphHost
{
public:
    explicit FilterGraph(const std::string& modules)
        : CGraphHost(test::compileXml(R"(<tree><core:object name="audio"><core:object name="paramcvt">
              <audio:cvt-real name="real" decimals="2"/></core:object>
              <include file=")" DRUMFELL_DATA R"(/Filters.xml"/></core:object>
              <audio:process-def name="main">)" +
                                      modules + "</audio:process-def></tree>"),
                     Options{"main", "plugin.main", kRateHz})
    {}

    // Names of the kernels that run in a block of 64 samples.
    std::vector<std::string> kernelsOfABlock()
    {
        CKernelRecording recording;
        kernels().setObserver(&recording);
        run(Channels(1, std::vector<double>(64, 0.5)), {64});
        kernels().setObserver(nullptr);
        std::vector<std::string> names;
        for (const CKernelCall& call : recording.calls()) {
            names.emplace_back(std::string_view(call.entry->name).substr(CKernelContext::kNamePrefix.size()));
        }
        return names;
    }
};

// Latency that the process "after" sees in its stream.
class LatencyBehind final : public CGraphVisitor
{
public:
    void enterCompound(const CAudioProcessBase&) override {}
    void leaveCompound(const CAudioProcessBase&) override {}
    void link(const CGraphLink&) override {}
    void terminal(const CAudioProcessBase& process) override
    {
        samples = process.fullName() == "plugin.main.after" ? process.format().latencySamples : samples;
    }

    double samples = -1.0;
};

using Names = std::vector<std::string>;

Channels noise(std::size_t channels, std::size_t count)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> level(-1.0, 1.0);
    Channels result(channels, std::vector<double>(count));
    for (auto& channel : result) {
        std::generate(channel.begin(), channel.end(), [&] { return level(random); });
    }
    return result;
}

Channels impulse(std::size_t count)
{
    Channels result(1, std::vector<double>(count));
    result[0][0] = 1.0;
    return result;
}

test::Complex transform(const std::vector<double>& signal, double cycles)
{
    test::Complex sum = 0.0;
    for (std::size_t i = 0; i < signal.size(); ++i) {
        sum += std::polar(signal[i], -2.0 * std::numbers::pi * cycles * static_cast<double>(i));
    }
    return sum;
}

// What the generator at `index` of an array says, to compare the stream with.
CFilterSections sectionsOf(const char* array, int index, std::initializer_list<double> params,
                           double rateHz = kRateHz)
{
    const auto* generators = dynamic_cast<const CAudioFilterGenArray*>(
        CObject::sharedObject()->findObject(std::string("audio.fltarray.") + array));
    CFilterSections list;
    generators->getGen(index)->generate(list, rateHz, {params.begin(), params.size()});
    return list;
}

TEST(ModFilter, RunsTheCascadeOfItsGenerator)
{
    const struct
    {
        const char* array;
        int index;
    } cases[] = {{"std", 1},      {"std", 2},       {"std", 5},    {"lp1", 3},       {"hp1", 2},
                 {"lriley12", 1}, {"dcfilters", 9}, {"lriley", 0}, {"dcfilters", 4}, {"hbf-steep5", 4}};
    for (const auto& choice : cases) {
        FilterGraph graph(filter(choice.array, std::to_string(choice.index).c_str(), "2000"));
        graph.set("f.gain", 2.0);
        const Channels output = graph.run(impulse(8192), {100, 512, 1});
        const CFilterSections expected = sectionsOf(choice.array, choice.index, {2000.0, 2.0, 0.7071});
        for (const double freqHz : {100.0, 1000.0, 2000.0, 4000.0, 15000.0}) {
            EXPECT_LT(
                std::abs(transform(output[0], freqHz / kRateHz) - test::response(expected, freqHz / kRateHz)),
                1e-9)
                << choice.array << " " << choice.index << " at " << freqHz;
        }
    }
}

TEST(ModFilter, RunsOneKernelForEachSection)
{
    const struct
    {
        const char* array;
        const char* index;
        Names kernels;
    } cases[] = {
        {"lriley", "1", {"fltbiqhpg", "fltbiqhpg"}},
        {"hp1", "2", {"flthp1b"}},       // a gain of 1 needs no gain form
        {"std", "1", {"fltbiqcommong"}}, // a peak of 0 dB runs all the same
        {"dcfilters", "3", {"flthp1a", "fltbiqhpg"}},
        {"hbf-soft", "3", {"flthbf2g"}},
    };
    for (const auto& choice : cases) {
        FilterGraph graph(filter(choice.array, choice.index, "100"));
        graph.kernelsOfABlock();
        EXPECT_EQ(graph.kernelsOfABlock(), choice.kernels);
    }
}

TEST(ModFilter, WithoutSectionsTheInputPassesByReference)
{
    for (const char* index : {"0", "6", "-1", "99999"}) {
        FilterGraph graph(filter("std", index, "100"));
        EXPECT_EQ(graph.kernelsOfABlock(), Names{}) << index;
        const Channels input = noise(2, 300);
        EXPECT_EQ(graph.run(input, {64}), input);
    }
}

TEST(ModFilter, RoundsTheIndexToTheNearest)
{
    FilterGraph graph(filter("std", "4.5", "100"));
    graph.kernelsOfABlock();
    EXPECT_EQ(graph.kernelsOfABlock(), Names{"fltbiqhpg"});
    graph.set("f.index", 4.49);
    graph.kernelsOfABlock();
    EXPECT_EQ(graph.kernelsOfABlock(), Names{"fltbiqlpg"});
}

TEST(ModFilter, RebuildsOnlyWhenAValueChanges)
{
    FilterGraph graph(filter("std", "4", "100"));
    graph.kernelsOfABlock();
    graph.set("f.freq", 100.0);
    EXPECT_EQ(graph.kernelsOfABlock(), Names{"fltbiqlpg"});
    graph.set("f.freq", 101.0);
    EXPECT_EQ(graph.kernelsOfABlock(), (Names{"fltbiqu", "fltbiqlpg"})) << "the same kind keeps its memory";
    graph.set("f.index", 5.0);
    EXPECT_EQ(graph.kernelsOfABlock(), (Names{"fltbiqi", "fltbiqhpg"}));
}

TEST(ModFilter, ANewRateBuildsTheFilterAnew)
{
    FilterGraph graph(filter("std", "4", "2000", kSmooth));
    double rateHz = kRateHz;
    graph.formatOf = [&rateHz](int) { return CAudioStreamFormat{rateHz, 0.0, 0}; };
    graph.kernelsOfABlock();
    rateHz = 96000.0;
    EXPECT_EQ(graph.kernelsOfABlock().back(), "fltbiqlpg");
    EXPECT_EQ(graph.kernelsOfABlock(), Names{"fltbiqlpg"}) << "no fade";
    graph.run(Channels(1, std::vector<double>(20000)), {512}); // rings out
    const Channels output = graph.run(impulse(8192), {512});
    const CFilterSections expected = sectionsOf("std", 4, {2000.0, 1.0, 0.7071}, rateHz);
    EXPECT_LT(std::abs(transform(output[0], 1.0 / 48.0) - test::response(expected, 1.0 / 48.0)), 1e-9);
}

TEST(ModFilter, SmoothChangesTakeUpTheRunningState)
{
    const Channels input = noise(1, 24000);
    const Channels unchanged = FilterGraph(filter("std", "4", "100", kSmooth)).run(input, {512});
    // Changes too small to hear: only a filter that goes on from where the other stood sounds the same.
    FilterGraph changing(filter("std", "4", "100", kSmooth));
    const Channels output = changing.run(input, {480}, [&](std::size_t position) {
        if (position % 960 == 0) {
            changing.set("f.freq", 100.0 + 1e-6 * (1.0 + static_cast<double>(position)));
        }
    });
    double worst = 0.0;
    for (std::size_t i = 0; i < input[0].size(); ++i) {
        worst = std::max(worst, std::fabs(output[0][i] - unchanged[0][i]));
    }
    EXPECT_LT(worst, 1e-3);
    EXPECT_GT(worst, 0.0);
}

TEST(ModFilter, SmoothChangesOfAnyKindDoNotClick)
{
    Channels input(1, std::vector<double>(48000));
    for (std::size_t i = 0; i < input[0].size(); ++i) {
        input[0][i] = std::sin(2.0 * std::numbers::pi * 60.0 * static_cast<double>(i) / kRateHz);
    }
    // Second difference of a sine of 60 Hz, and of one twice as loud.
    const double calm = std::pow(2.0 * std::numbers::pi * 60.0 / kRateHz, 2.0);
    const struct
    {
        const char* array;
        const char* param;
        double value;
    } changes[] = {
        {"lp1", "f.freq", 4000.0}, {"lp1", "f.index", 3.0}, {"lp1", "f.gain", 2.0}, {"lp1", "f.index", 0.0}};
    for (const auto& change : changes) {
        FilterGraph graph(filter(change.array, "1", "1000", kSmooth));
        const Channels output = graph.run(input, {480}, [&](std::size_t position) {
            if (position == 24000) {
                graph.set(change.param, change.value);
            }
        });
        double roughness = 0.0;
        for (std::size_t i = 12000; i + 1 < output[0].size(); ++i) {
            roughness =
                std::max(roughness, std::fabs(output[0][i - 1] - 2.0 * output[0][i] + output[0][i + 1]));
        }
        EXPECT_LT(roughness, 5.0 * calm) << change.param << " to " << change.value;
    }
}

TEST(ModFilter, BlockSizesDoNotChangeABit)
{
    const Channels input = noise(3, 12000);
    const auto stream = [&](const std::vector<int>& blocks) {
        FilterGraph graph(filter("dcfilters", "7", "50", kSmooth));
        Channels first = graph.run(Channels{{input[0].begin(), input[0].begin() + 6000},
                                            {input[1].begin(), input[1].begin() + 6000},
                                            {input[2].begin(), input[2].begin() + 6000}},
                                   blocks);
        graph.set("f.freq", 80.0);
        graph.set("f.index", 4.0);
        const Channels second = graph.run(Channels{{input[0].begin() + 6000, input[0].end()},
                                                   {input[1].begin() + 6000, input[1].end()},
                                                   {input[2].begin() + 6000, input[2].end()}},
                                          blocks);
        for (std::size_t i = 0; i < first.size(); ++i) {
            first[i].insert(first[i].end(), second[i].begin(), second[i].end());
        }
        return first;
    };
    const Channels whole = stream({6000});
    ASSERT_EQ(whole[0].size(), 12000u);
    for (const std::vector<int>& blocks : {std::vector<int>{1}, {7}, {512}, {3, 511, 64}}) {
        EXPECT_EQ(stream(blocks), whole) << blocks[0];
    }
}

TEST(ModFilter, BandsRunInARow)
{
    // Elements of the parameters are bands.
    const std::string bands = R"(<audio:modFilter name="f" gen-array="audio.fltarray.std">)" +
                              slot(0, "count", "2") + slot(1, "index", "4,5") + slot(2, "freq", "4000,500") +
                              slot(3, "gain", "1,1") + slot(4, "bw", "2,1") + "</audio:modFilter>";
    FilterGraph graph(bands);
    const Channels output = graph.run(impulse(16384), {512});
    const CFilterSections low = sectionsOf("std", 4, {4000.0, 1.0, 2.0});
    const CFilterSections high = sectionsOf("std", 5, {500.0, 1.0, 1.0});
    for (const double freqHz : {100.0, 500.0, 1500.0, 4000.0, 15000.0}) {
        const double cycles = freqHz / kRateHz;
        EXPECT_LT(std::abs(transform(output[0], cycles) -
                           test::response(low, cycles) * test::response(high, cycles)),
                  1e-9)
            << freqHz;
    }
    const std::size_t slotsOfTwo = graph.kernels().pool().slotsInUse();
    graph.set("f.count", 1.0);
    graph.kernelsOfABlock();
    EXPECT_EQ(graph.kernelsOfABlock(), Names{"fltbiqlpg"});
    EXPECT_EQ(graph.kernels().pool().slotsInUse(), slotsOfTwo - 1) << "the state is given back";
    graph.set("f.count", 0.0);
    EXPECT_EQ(graph.kernelsOfABlock(), Names{});
    graph.set("f.count", 2.0);
    graph.kernelsOfABlock();
    EXPECT_EQ(graph.kernelsOfABlock(), (Names{"fltbiqlpg", "fltbiqhpg"}));
}

TEST(ModFilter, AutomationAllocatesNothingOnceWarm)
{
    if (!test::AllocationGuard::kCounts) {
        GTEST_SKIP() << "nothing is counted in this build";
    }
    FilterGraph graph(filter("dcfilters", "10", "50", kSmooth));
    const Channels input = noise(2, 512);
    const auto automate = [&](int steps) {
        for (int i = 0; i < steps; ++i) {
            graph.set("f.freq", 20.0 + i % 37);
            graph.set("f.index", i % 11);
            graph.runBlock(input, 0, 512);
            graph.discard();
        }
    };
    automate(100);
    std::uint32_t total = 0;
    for (int i = 0; i < 100; ++i) {
        graph.set("f.freq", 20.0 + i % 37);
        graph.set("f.index", i % 11);
        test::AllocationGuard guard;
        graph.runBlock(input, 0, 512);
        total += guard.stop().allocations;
        graph.discard();
    }
    EXPECT_EQ(total, 0u);
}

double latencyBehind(FilterGraph& graph)
{
    graph.runBlock(Channels(1, std::vector<double>(64)), 0, 64);
    graph.discard();
    LatencyBehind behind;
    graph.root().visit(behind);
    return behind.samples;
}

TEST(ModFilter, HalfBandFiltersAddTheirDelayToTheLatency)
{
    const auto delay = [](double c) { return 2.0 * (1.0 - c) / (1.0 + c); };
    const std::string after = R"(<audio:modAbs name="after"/>)";
    {
        FilterGraph graph(filter("hbf-soft", "2", "100") + after);
        const double a = delay(0.042454709865267684) + delay(0.393319893190328010);
        const double b = delay(0.170739850497499070) + delay(0.745713588720222980);
        EXPECT_NEAR(latencyBehind(graph), (a + b + 1.0) / 2.0, 1e-12);
        // The stream's format follows a change.
        graph.set("f.index", 3.0);
        EXPECT_NEAR(latencyBehind(graph),
                    (delay(0.138024994073021350) + delay(0.584683257487323190) + 1.0) / 2.0, 1e-12);
    }
    FilterGraph highPass(filter("dcfilters", "10", "50") + after);
    EXPECT_EQ(latencyBehind(highPass), 0.0);
}

TEST(ModFilter, NeedsItsArray)
{
    try {
        FilterGraph graph(filter("nowhere", "0", "100"));
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what())
                      .find("Filter generator array with the name 'audio.fltarray.nowhere' not found."),
                  std::string::npos)
            << error.what();
    }
}

TEST(ModFilter, FirstOrderChainsFollowTheirFrequencyThroughAFade)
{
    // An "update" of these clears their memory; it must not keep the frequency.
    Channels input(1, std::vector<double>(24000));
    for (std::size_t i = 0; i < input[0].size(); ++i) {
        input[0][i] = std::sin(0.05 * static_cast<double>(i));
    }
    for (const char* array : {"lp1", "hp1"}) {
        for (const char* index : {"1", "2", "3", "4"}) {
            // Only one graph can stand at a time.
            const auto lastSample = [&](const char* startHz, double laterHz) {
                FilterGraph graph(filter(array, index, startHz, kSmooth));
                return graph
                    .run(input, {480},
                         [&](std::size_t position) {
                             if (position == 4800) {
                                 graph.set("f.freq", laterHz);
                             }
                         })[0]
                    .back();
            };
            EXPECT_NEAR(lastSample("200", 2000.0), lastSample("2000", 2000.0), 1e-9) << array << ' ' << index;
        }
    }
}

} // namespace
} // namespace qel
