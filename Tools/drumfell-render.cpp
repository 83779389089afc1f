// Offline host: audio files through a VST 2.4 effect.
#include "Render/CGuestLibrary.h"
#include "Render/CPendingFile.h"
#include "Render/RenderBatch.h"
#include "Render/RenderCommand.h"
#include "Render/RenderError.h"
#include "Render/RenderReport.h"
#include "Render/RenderSystem.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <set>
#include <sstream>

namespace {

using namespace qel::tools;
namespace fs = std::filesystem;

void makeFolders(const CRenderCommand& command)
{
    std::vector<fs::path> folders{command.outputFolder};
    if (command.inputs.size() > 1) {
        folders.push_back(command.plot);
    }
    for (const fs::path& folder : folders) {
        std::error_code error;
        if (!folder.empty() && !fs::create_directories(systemPath(folder), error) && error) {
            throw CRenderError(CExitCode::kOutput, folder.string() + ": " + error.message());
        }
    }
}

// --- lists

using CRow = std::vector<std::string>;

// Columns as wide as they must be; those of numbers are flush right.
void printTable(const std::vector<CRow>& rows, const std::set<std::size_t>& rightColumns)
{
    std::vector<std::size_t> widths;
    for (const CRow& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const CRow& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string blanks(widths[i] - row[i].size(), ' ');
            line += (i == 0 ? "" : "  ") + (rightColumns.contains(i) ? blanks + row[i] : row[i] + blanks);
        }
        std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    }
}

void listPresets(CGuestPlugin& guest)
{
    std::vector<CRow> rows{{"#", "Preset"}};
    for (int i = 0; i < guest.programCount(); ++i) {
        rows.push_back({std::to_string(i), guest.programName(i)});
    }
    printTable(rows, {0});
}

void listParameters(CGuestPlugin& guest)
{
    std::vector<CRow> rows{{"#", "Parameter", "Value", "Display", "Label"}};
    for (int i = 0; i < guest.parameterCount(); ++i) {
        std::ostringstream value;
        value << std::fixed << std::setprecision(4) << guest.parameter(i);
        rows.push_back({std::to_string(i), guest.parameterName(i), value.str(), guest.parameterDisplay(i),
                        guest.parameterLabel(i)});
    }
    printTable(rows, {0, 2, 3});
}

// --- the work

void writeReport(const fs::path& path, const std::string& report)
{
    if (path == "-") {
        std::cout << report;
        return;
    }
    CPendingFile pending(path);
    std::ofstream file(pending.path(), std::ios::binary);
    file << report;
    file.close();
    if (!file) {
        throw CRenderError(CExitCode::kOutput, path.string() + ": cannot be written");
    }
    pending.commit();
}

// The first failure decides the exit code.
CExitCode report(const CRenderCommand& command, const std::vector<CRenderJob>& jobs,
                 std::vector<CRenderOutcome> outcomes, CGuestPlugin& guest)
{
    CExitCode code = CExitCode::kDone;
    std::vector<CRenderResult> results;
    std::set<std::string> told; // one fault of the settings comes from every file
    std::vector<CRenderFailure> failures;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        CRenderOutcome& outcome = outcomes[i];
        if (outcome.result) {
            results.push_back(std::move(*outcome.result));
        }
        if (outcome.code == CExitCode::kDone) {
            continue;
        }
        failures.push_back({jobs[i].input, outcome.code, outcome.error});
        code = code == CExitCode::kDone ? outcome.code : code;
        if (told.insert(outcome.error).second) {
            std::cerr << "drumfell-render: " << outcome.error << '\n';
        }
    }
    if (!command.isQuiet && command.json != "-") {
        for (const CRenderResult& result : results) {
            std::cout << textReport(result);
        }
    }
    if (!command.json.empty()) {
        writeReport(command.json, jsonReport(guest, command.settings, results, failures));
    }
    return code;
}

CExitCode run(const CRenderCommand& command)
{
    const std::vector<CRenderJob> jobs = makeJobs(command);
    const bool isAsked = command.listsPresets || command.listsParameters;
    if (jobs.empty() && !isAsked) {
        throw CRenderError(CExitCode::kUsage, "there is nothing to do; --help tells what could be");
    }
    CPendingFile::catchSignals();
    const auto library =
        std::make_shared<CGuestLibrary>(command.library.empty() ? findOwnLibrary() : command.library);
    constexpr double kAnyRateHz = 48000.0;
    CGuestPlugin guest(library, guestSetup(command.settings, kAnyRateHz));
    if (isAsked) {
        configureGuest(guest, command.settings);
    }
    if (command.listsPresets) {
        listPresets(guest);
    }
    if (command.listsParameters) {
        listParameters(guest);
    }
    if (jobs.empty()) {
        return CExitCode::kDone;
    }
    makeFolders(command);
    return report(command, jobs, renderAll(library, command.settings, jobs, command.workers, guest.name()),
                  guest);
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(
        "Sends audio files through a VST 2.4 effect, faster than real time and with its delay taken out",
        "drumfell-render");
    app.footer(
        "Exit codes: 0 done, 2 command line, 3 library, 4 input, 5 output, 6 parameter, preset or state,\n"
        "7 the effect put out NaN or infinity, 130 interrupted.");
    CRenderCommand command;
    addOptions(app, command);
    try {
        std::vector<std::string> arguments = programArguments(argc, argv);
        std::ranges::reverse(arguments); // as the parser wants them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(CExitCode::kUsage);
    }
    try {
        return static_cast<int>(run(command));
    } catch (const CRenderError& error) {
        std::cerr << "drumfell-render: " << error.what() << '\n';
        return static_cast<int>(error.code());
    } catch (const std::exception& error) {
        std::cerr << "drumfell-render: " << error.what() << '\n';
        return static_cast<int>(CExitCode::kOutput);
    }
}
