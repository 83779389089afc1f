// Resamplers with the half-band filters that are delivered.
#include "../TestRate.h"
#include "CModDownsampler.h"
#include "CModUpsampler.h"
#include "ProcessRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace qel::test {
namespace {

std::string halfBand(const char* name, const char* array, const char* index)
{
    return std::string("<audio:modFilter name=\"") + name +
           "\" is-smooth-update=\"true\" use-time-shift=\"false\" " + "gen-array=\"audio.fltarray." + array +
           "\">" + slot("count", 0) + slot("index", 1) +
           R"(<audio:param name="index" converter="real" min-values="0" max-values="6" def-values=")" +
           index + "\"/></audio:modFilter>";
}

std::string plainResampler(const char* tag, const char* name)
{
    return std::string("<audio:") + tag + " name=\"" + name + "\">" + slot("mode", 0) +
           R"(<audio:param-remap orig="mode" new="^mode"/></audio:)" + tag + ">";
}

const std::string kUpOnly = plainResampler("modUpsampler", "up");
const std::string kDownOnly = plainResampler("modDownsampler", "down");

class FilteredGraph : public tools::CGraphHost
{
public:
    explicit FilteredGraph(const std::string& main)
        : CGraphHost(compileXml(R"(<tree><core:object name="audio"><core:object name="paramcvt">
              <audio:cvt-real name="real" decimals="2"/></core:object>
              <include file=")" DRUMFELL_DATA R"(/Filters.xml"/>
              <audio:modInterpolator name="modUpsamplerInterpolator" use-time-shift="false"/>
              <audio:modDecimator name="modDownsamplerDecimator" use-time-shift="false"/>)" +
                                halfBand("modUpsamplerFilter1", "hbf-steep5", "4") +
                                halfBand("modUpsamplerFilter2", "hbf-soft", "2") +
                                halfBand("modDownsamplerFilter1", "hbf-steep5", "4") +
                                halfBand("modDownsamplerFilter2", "hbf-soft", "2") +
                                R"(</core:object><audio:process-def name="main">)" +
                                globalParam("mode", "1") + main + "</audio:process-def></tree>"),
                     Options{"main", "plugin.main", kRateHz})
    {}
};

Channels sine(double cycles, std::size_t count)
{
    Channels result(1, std::vector<double>(count));
    for (std::size_t i = 0; i < count; ++i) {
        result[0][i] = std::sin(2.0 * std::numbers::pi * cycles * static_cast<double>(i));
    }
    return result;
}

// Amplitude and phase of a sine of the given frequency in whole periods at the end of a signal.
std::complex<double> measure(const std::vector<double>& signal, double cycles, std::size_t length)
{
    std::complex<double> sum = 0.0;
    for (std::size_t i = signal.size() - length; i < signal.size(); ++i) {
        sum += std::polar(2.0 * signal[i] / static_cast<double>(length),
                          -2.0 * std::numbers::pi * cycles * static_cast<double>(i));
    }
    return sum;
}

TEST(ResamplerFilters, RemoveTheImagesOnTheWayUpAndWhatWouldFoldOnTheWayDown)
{
    for (const double cycles : {0.1, 0.25, 0.408}) { // up to 18 kHz of 44.1
        for (const int factor : {2, 4, 8}) {
            const double mode = 1.0 + std::log2(factor);
            const Channels raised = [&] {
                FilteredGraph up(kUpOnly);
                up.set("mode", mode);
                return up.run(sine(cycles, 10000), {512});
            }();
            EXPECT_NEAR(std::abs(measure(raised[0], cycles / factor, 10000)), 1.0, 1e-4);
            for (int image = 1; image < factor; ++image) { // around each multiple of the host's rate
                EXPECT_LT(std::abs(measure(raised[0], (image - cycles) / factor, 10000)), 1e-5)
                    << image << " of " << factor << " at " << cycles;
            }
            FilteredGraph down(kDownOnly);
            down.set("mode", mode);
            for (int image = 1; image <= factor / 2; ++image) {
                const auto length = static_cast<std::size_t>(10000 * factor);
                const Channels lowered = down.run(sine((image - cycles) / factor, length), {512});
                EXPECT_LT(std::abs(measure(lowered[0], cycles, 5000)), 1e-5)
                    << image << " of " << factor << " at " << cycles;
            }
        }
    }
}

} // namespace
} // namespace qel::test
