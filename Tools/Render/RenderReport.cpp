// What came of it, for people and for programs.
#include "Render/RenderReport.h"

#include <cmath>
#include <iomanip>
#include <sstream>

#include <nlohmann/json.hpp>

namespace qel::tools {

namespace {

using Json = nlohmann::ordered_json;

Json levelJson(double power)
{
    return power > 0.0 ? Json(std::round(1000.0 * 10.0 * std::log10(power)) / 1000.0) : Json(nullptr);
}

Json levelsJson(double peak, double power, double lowPower)
{
    return {{"peakDb", levelJson(peak * peak)},
            {"rmsDb", levelJson(power)},
            {"crestDb", levelJson(power > 0.0 ? peak * peak / power : 0.0)},
            {"lowBandRmsDb", levelJson(lowPower)}};
}

Json metersJson(const CSignalMeters& meters)
{
    const COverallLevels overall = overallLevels(meters);
    Json json = levelsJson(overall.peak, overall.power, overall.lowPower);
    json["frames"] = meters.frameCount();
    return json;
}

Json resultJson(const CRenderResult& result)
{
    return {{"input", result.job.input.string()},
            {"output", result.job.output.string()},
            {"plot", result.job.plot.string()},
            {"preset", result.presetName},
            {"inputFormat", result.inputFormat},
            {"outputFormat", result.outputFormat},
            {"rateHz", result.rateHz},
            {"latencySamples", result.latencySamples},
            {"processSeconds", result.processSec},
            {"realTimeFactor", realTimeFactor(result)},
            {"clippedSamples", result.clippedCount},
            {"before", metersJson(result.before)},
            {"after", metersJson(result.after)}};
}

Json settingsJson(const CRenderSettings& settings)
{
    return {{"blockSize", settings.blockSize},
            {"doublePrecision", settings.isDouble},
            {"inputGainDb", settings.inputGainDb},
            {"tailSeconds", settings.tailSec},
            {"lowBandHz", kLowBandHz},
            {"set", settings.assignments}};
}

std::string change(const char* name, double before, double after)
{
    return std::string(name) + " " + decibels(before) + " -> " + decibels(after) + " dB";
}

} // namespace

COverallLevels overallLevels(const CSignalMeters& meters)
{
    COverallLevels levels;
    const double share = 1.0 / meters.channelCount();
    for (int channel = 0; channel < meters.channelCount(); ++channel) {
        levels.peak = std::max(levels.peak, meters.peak(channel));
        levels.power += share * meters.meanSquare(channel);
        levels.lowPower += share * meters.spectrum().powerBelow(channel, kLowBandHz);
    }
    return levels;
}

double realTimeFactor(const CRenderResult& result)
{
    const double seconds = static_cast<double>(result.after.frameCount()) / result.rateHz;
    return result.processSec > 0.0 ? seconds / result.processSec : 0.0;
}

std::string decibels(double power, int digits)
{
    if (power <= 0.0) {
        return "-inf";
    }
    const double steps = std::pow(10.0, digits);
    std::ostringstream text;
    // Adding zero takes the sign off a negative one.
    text << std::fixed << std::setprecision(digits)
         << std::round(10.0 * std::log10(power) * steps) / steps + 0.0;
    return text.str();
}

std::string jsonReport(CGuestPlugin& guest, const CRenderSettings& settings,
                       const std::vector<CRenderResult>& results, const std::vector<CRenderFailure>& failures)
{
    Json json = {{"effect",
                  {{"library", guest.library().path().string()},
                   {"name", guest.name()},
                   {"vendor", guest.vendor()},
                   {"version", guest.version()}}},
                 {"settings", settingsJson(settings)},
                 {"files", Json::array()},
                 {"failed", Json::array()}};
    for (const CRenderResult& result : results) {
        json["files"].push_back(resultJson(result));
    }
    for (const CRenderFailure& failure : failures) {
        json["failed"].push_back({{"input", failure.input.string()},
                                  {"exitCode", static_cast<int>(failure.code)},
                                  {"error", failure.error}});
    }
    // Names of files and presets need not be UTF-8.
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string textReport(const CRenderResult& result)
{
    const COverallLevels before = overallLevels(result.before);
    const COverallLevels after = overallLevels(result.after);
    std::ostringstream text;
    text << result.job.input.string();
    if (!result.job.output.empty()) {
        text << " -> " << result.job.output.string() << " (" << result.outputFormat << ")";
    }
    text << "\n  " << change("peak", before.peak * before.peak, after.peak * after.peak) << ", "
         << change("RMS", before.power, after.power) << ", "
         << change("below 120 Hz", before.lowPower, after.lowPower) << "\n  delay " << result.latencySamples
         << " samples, " << std::fixed << std::setprecision(1) << realTimeFactor(result)
         << " times real time\n";
    if (result.clippedCount > 0) {
        text << "  " << result.clippedCount
             << " samples were over full scale and are limited; --format float keeps them\n";
    }
    return text.str();
}

} // namespace qel::tools
