// What the user wants done.
#pragma once

#include "Render/AudioFile.h"
#include "Render/CGuestPlugin.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

struct CRenderSettings
{
    // Applied in this order.
    std::vector<std::filesystem::path> stateFiles;
    std::string preset; // name or number; empty: as the effect starts
    std::vector<std::string> assignments;

    int blockSize = 512; // samples
    bool isDouble = false;
    double inputGainDb = 0.0; // before the effect; levels "before" are those behind it
    double tailSec = 0.0;
    CSampleFormat format = CSampleFormat::kSame;
};

struct CRenderJob
{
    std::filesystem::path input;
    std::filesystem::path output; // empty: measure only
    std::filesystem::path plot;   // empty: none
};

// The name in any case, its number, or its beginning if only one has it. Throws CRenderError (kSetting).
int findPreset(CGuestPlugin& guest, const std::string& nameOrNumber);

// State files, preset and assignments, in this order.
void configureGuest(CGuestPlugin& guest, const CRenderSettings& settings);

CGuestPlugin::Setup guestSetup(const CRenderSettings& settings, double rateHz);

} // namespace qel::tools
