// Parameter changes over time.
#include "Render/Automation.h"

#include "Render/DisplayNumber.h"
#include "Render/RenderError.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <optional>

namespace qel::tools {

namespace {

// A '#' within a word is part of it.
std::string withoutComment(const std::string& line)
{
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        isQuoted = isQuoted != (line[i] == '"');
        if (line[i] == '#' && !isQuoted && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) {
            return line.substr(0, i);
        }
    }
    return line;
}

// The first word of `rest`, or what stands in quotes at its front; cut off it.
std::optional<std::string> takeWord(std::string& rest)
{
    if (rest.empty()) {
        return std::nullopt;
    }
    const bool isQuoted = rest[0] == '"';
    const std::size_t end = isQuoted ? rest.find('"', 1) : rest.find_first_of(" \t");
    if (isQuoted && end == rest.npos) {
        return std::nullopt;
    }
    const std::string word = isQuoted ? rest.substr(1, end - 1) : rest.substr(0, end);
    rest = end == rest.npos ? "" : trimmed(rest.substr(end + (isQuoted ? 1 : 0)));
    return word;
}

} // namespace

std::vector<CAutomationLine> readAutomation(const std::filesystem::path& path)
{
    std::ifstream file(path);
    if (!file) {
        throw CRenderError(CExitCode::kInput, path.string() + ": cannot be read");
    }
    std::vector<CAutomationLine> lines;
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        std::string rest = trimmed(withoutComment(text));
        if (rest.empty()) {
            continue;
        }
        const std::optional<std::string> time = takeWord(rest);
        const double seconds = parseDisplayNumber(time.value_or(""), "s").value_or(-1.0);
        const std::optional<std::string> parameter = takeWord(rest);
        const std::optional<std::string> value = rest.starts_with('"') ? takeWord(rest) : rest;
        if (!std::isfinite(seconds) || seconds < 0.0 || !parameter || !value || value->empty()) {
            throw CRenderError(CExitCode::kInput, path.string() + ":" + std::to_string(number) +
                                                      ": a line has the form TIME PARAMETER VALUE");
        }
        lines.push_back({number, seconds, *parameter, *value});
    }
    std::ranges::stable_sort(lines, {}, &CAutomationLine::timeSec);
    return lines;
}

} // namespace qel::tools
