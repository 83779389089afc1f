// The command line of drumfell-render.
#pragma once

#include "Render/RenderSettings.h"

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace qel::tools {

struct CRenderCommand
{
    std::filesystem::path library; // empty: Drumfell beside this program
    std::vector<std::filesystem::path> inputs;
    std::filesystem::path output;
    std::filesystem::path outputFolder;
    std::string type;
    std::filesystem::path plot;
    std::filesystem::path json;
    int workers = 1;
    bool listsPresets = false;
    bool listsParameters = false;
    bool isQuiet = false;
    CRenderSettings settings;
};

// Ties the options to the fields of `command`, which outlives the parsing.
void addOptions(CLI::App& app, CRenderCommand& command);

// What is to be done, with a file name for each result. No result takes the name of another or of an input.
// Throws CRenderError (kUsage).
std::vector<CRenderJob> makeJobs(const CRenderCommand& command);

} // namespace qel::tools
