// The filter module in a graph: what it does to a signal, and what it does when something changes.
#include "CModFilter.h"

#include "GraphHost/CKernelRecording.h"
#include "ProcessRig.h"

#include <gtest/gtest.h>

#include <cmath>

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

using Names = std::vector<std::string>;

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
