// Parameter changes over time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// A line of an automation file: `TIME PARAMETER VALUE`, the time in seconds of the file, the parameter by
// name or index (in quotes if it has blanks), the value as for --set. '#' begins a comment; empty lines are
// skipped.
struct CAutomationLine
{
    int number = 0; // in the file, from 1
    double timeSec = 0.0;
    std::string parameter;
    std::string value;
};

// In order of time; lines of the same time keep theirs. Throws CRenderError (kInput) that names the line.
std::vector<CAutomationLine> readAutomation(const std::filesystem::path& path);

// For one guest and rate.
struct CAutomationPoint
{
    std::int64_t frame = 0;
    int parameter = 0;
    float norm = 0.0f;
};

} // namespace qel::tools
