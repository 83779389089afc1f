// What came of it, for people and for programs.
#pragma once

#include "Render/CFileRender.h"
#include "Render/RenderError.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// Levels are in dB of full scale; low frequencies are those below this.
inline constexpr double kLowBandHz = 120.0;

// A file of which nothing came.
struct CRenderFailure
{
    std::filesystem::path input;
    CExitCode code = CExitCode::kDone;
    std::string error;
};

// One JSON document: the effect, the settings, and for each file its format, levels before and after, delay
// and speed; then the files that failed. Silence has the level null.
std::string jsonReport(CGuestPlugin& guest, const CRenderSettings& settings,
                       const std::vector<CRenderResult>& results,
                       const std::vector<CRenderFailure>& failures);
// Some lines for a person.
std::string textReport(const CRenderResult& result);

// Seconds of audio done in a second.
double realTimeFactor(const CRenderResult& result);
// "-7.3", or "-inf".
std::string decibels(double power, int digits = 1);

struct COverallLevels
{
    double peak = 0.0;  // the highest of all channels
    double power = 0.0; // mean squares, over all channels
    double lowPower = 0.0;
};
COverallLevels overallLevels(const CSignalMeters& meters);

} // namespace qel::tools
