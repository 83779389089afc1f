// Offline host: audio files through a VST 2.4 effect.
#include "Render/CGuestLibrary.h"
#include "Render/DisplayNumber.h"
#include "Render/GuestState.h"
#include "Render/RenderBatch.h"
#include "Render/RenderError.h"
#include "Render/RenderReport.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace qel::tools;
namespace fs = std::filesystem;

struct CCommand
{
    std::string library;
    std::vector<std::string> inputs;
    std::string output;
    std::string outputFolder;
    std::string suffix;
    std::string type;
    std::string plot;
    std::string json;
    std::vector<std::string> stateFiles;
    std::string stateToSave;
    std::string automationFile;
    std::string block = "512";
    std::string format = "same";
    int workers = 1;
    int rateHz = 0;
    int channels = 0;
    bool listsPresets = false;
    bool listsParameters = false;
    bool isQuiet = false;
    CRenderSettings settings;
};

[[noreturn]] void misused(const std::string& text)
{
    throw CRenderError(CExitCode::kUsage, text);
}

void addSoundOptions(CLI::App& app, CCommand& command)
{
    CRenderSettings& settings = command.settings;
    app.add_option("--plugin", command.library, "VST 2.4 library; Drumfell beside this program if not given");
    app.add_option("--load", command.stateFiles, "State file to load first: .fxp, .fxb, .cpf or .cbf")
        ->allow_extra_args(false);
    app.add_option("--preset", settings.preset, "Preset by name, its beginning, or number");
    app.add_option(
           "--set", settings.assignments,
           "NAME=VALUE, parameter by name or number; in the units shown (+12, 1.2k, Pumping) or, with an n "
           "behind, as a position from 0 to 1 (0.5n)")
        ->allow_extra_args(false);
    app.add_option("--automate", command.automationFile,
                   "File of lines TIME PARAMETER VALUE, times in seconds");
    app.add_option("--save", command.stateToSave, "Save the state so reached: .fxp, .fxb, .cpf or .cbf");
    app.add_option("--block", command.block, "Samples in a block, or 'random' for lengths from 1 to 1024")
        ->capture_default_str();
    app.add_option("--seed", settings.seed, "Of random blocks")->capture_default_str();
    app.add_flag("--double", settings.isDouble, "Process in double precision");
    app.add_option("--tempo", settings.tempoBpm, "Beats a minute")
        ->capture_default_str()
        ->check(CLI::Range(1.0, 999.0));
    app.add_option("--input-gain", settings.inputGainDb, "dB on the file before the effect")
        ->check(CLI::Range(-200.0, 200.0));
    app.add_option("--tail", settings.tailSec, "Seconds to render beyond the end of the file")
        ->check(CLI::Range(0.0, 3600.0));
    app.add_option("--preroll", settings.prerollSec,
                   "Seconds of silence that the effect gets before it begins anew")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 60.0));
}

void addFileOptions(CLI::App& app, CCommand& command)
{
    app.add_option("FILES", command.inputs, "Audio files: WAV, FLAC, OGG and others");
    CLI::Option* output =
        app.add_option("-o,--output", command.output, "Result of one file; its ending is its type");
    app.add_option("--output-dir", command.outputFolder, "Folder for the results")->excludes(output);
    app.add_option("--suffix", command.suffix, "Put behind the names of results, before the ending")
        ->excludes(output);
    app.add_option("--type", command.type, "Ending of results in place of that of the file")
        ->excludes(output);
    app.add_option("--format", command.format,
                   "Samples of the result: 'same' as in the file, 16, 24, 32 or float")
        ->capture_default_str();
    app.add_option("--rate", command.rateHz, "Refuse files of another rate")->check(CLI::Range(1, 1000000));
    app.add_option("--channels", command.channels,
                   "Channels of the result; as many as the file has if not given")
        ->check(CLI::Range(1, 1024));
    app.add_flag("--drop-channels", command.settings.dropsChannels,
                 "Take files with more channels than the effect, without the channels beyond");
    app.add_option("-j,--jobs", command.workers, "Files rendered at the same time")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    app.add_option("--plot", command.plot, "Picture of before and after (PNG), or a folder for them");
    app.add_option("--json", command.json, "Report to this file; - for standard output");
    app.add_flag("--list-presets", command.listsPresets, "Print the presets");
    app.add_flag("--list-parameters", command.listsParameters, "Print the parameters as they stand");
    app.add_flag("-q,--quiet", command.isQuiet, "Print nothing but errors and what is asked for");
}

CSampleFormat sampleFormat(const std::string& name)
{
    const std::map<std::string, CSampleFormat> formats{{"same", CSampleFormat::kSame},
                                                       {"16", CSampleFormat::kPcm16},
                                                       {"24", CSampleFormat::kPcm24},
                                                       {"32", CSampleFormat::kPcm32},
                                                       {"float", CSampleFormat::kFloat}};
    const auto found = formats.find(name);
    if (found == formats.end()) {
        misused("--format: '" + name + "' is none of same, 16, 24, 32 and float");
    }
    return found->second;
}

void completeSettings(CCommand& command)
{
    constexpr int kLongestRandomBlock = 1024;
    constexpr int kLongestBlock = 1 << 20;
    CRenderSettings& settings = command.settings;
    settings.hasRandomBlocks = command.block == "random";
    const std::optional<int> block = parseIndex(command.block);
    if (!settings.hasRandomBlocks && (!block || *block < 1 || *block > kLongestBlock)) {
        misused("--block: '" + command.block + "' is neither a length from 1 to 1048576 nor 'random'");
    }
    settings.blockSize = settings.hasRandomBlocks ? kLongestRandomBlock : *block;
    settings.format = sampleFormat(command.format);
    settings.stateFiles.assign(command.stateFiles.begin(), command.stateFiles.end());
    if (command.rateHz > 0) {
        settings.rateHz = command.rateHz;
    }
    if (command.channels > 0) {
        settings.channels = command.channels;
    }
    if (!command.automationFile.empty()) {
        settings.automation = readAutomation(command.automationFile);
    }
}

fs::path outputFor(const CCommand& command, const fs::path& input)
{
    if (!command.output.empty()) {
        return command.output;
    }
    if (command.outputFolder.empty() && command.suffix.empty() && command.type.empty()) {
        return {};
    }
    std::string ending = command.type.empty() ? input.extension().string() : command.type;
    if (!ending.starts_with('.')) {
        ending.insert(0, ".");
    }
    const fs::path folder =
        command.outputFolder.empty() ? input.parent_path() : fs::path(command.outputFolder);
    return folder / (input.stem().string() + command.suffix + ending);
}

std::vector<CRenderJob> makeJobs(const CCommand& command)
{
    if (command.inputs.size() > 1 && !command.output.empty()) {
        misused("-o names the result of one file; use --output-dir for several");
    }
    std::vector<CRenderJob> jobs;
    std::set<fs::path> results;
    for (const std::string& other : {command.json, command.stateToSave}) {
        std::error_code ignored;
        if (!other.empty() && other != "-" && !results.insert(fs::weakly_canonical(other, ignored)).second) {
            misused(other + ": two results would have this name");
        }
    }
    for (const std::string& name : command.inputs) {
        CRenderJob job{name, outputFor(command, name), {}};
        if (!command.plot.empty()) {
            const fs::path own = (job.output.empty() ? job.input : job.output).stem().string() + ".png";
            const bool isFolder = command.inputs.size() > 1 || fs::is_directory(command.plot);
            job.plot = isFolder ? command.plot / own : fs::path(command.plot);
        }
        if (job.output.empty() && command.plot.empty() && command.json.empty()) {
            misused("where should the result of " + name + " go? Give -o, --output-dir or --suffix");
        }
        std::error_code ignored;
        for (const fs::path& result : {job.output, job.plot}) {
            if (!result.empty() && !results.insert(fs::weakly_canonical(result, ignored)).second) {
                misused(result.string() + ": two results would have this name");
            }
        }
        jobs.push_back(job);
    }
    for (const std::string& input : command.inputs) {
        for (const fs::path& result : results) {
            std::error_code ignored;
            if (fs::equivalent(input, result, ignored)) {
                misused(input + ": a result would replace the file");
            }
        }
    }
    return jobs;
}

void makeFolders(const CCommand& command)
{
    std::vector<std::string> folders{command.outputFolder};
    if (command.inputs.size() > 1) {
        folders.push_back(command.plot);
    }
    for (const std::string& folder : folders) {
        std::error_code error;
        if (!folder.empty() && !fs::create_directories(folder, error) && error) {
            throw CRenderError(CExitCode::kOutput, folder + ": " + error.message());
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

void writeReport(const std::string& path, const std::string& report)
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
        throw CRenderError(CExitCode::kOutput, path + ": cannot be written");
    }
    pending.commit();
}

// The first failure decides the exit code.
CExitCode report(const CCommand& command, const std::vector<CRenderJob>& jobs,
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

CExitCode run(CCommand& command)
{
    completeSettings(command);
    const std::vector<CRenderJob> jobs = makeJobs(command);
    const bool isAsked = command.listsPresets || command.listsParameters || !command.stateToSave.empty();
    if (jobs.empty() && !isAsked) {
        misused("there is nothing to do; --help tells what could be");
    }
    CPendingFile::catchSignals();
    const auto library = std::make_shared<CGuestLibrary>(command.library.empty() ? findOwnLibrary()
                                                                                 : fs::path(command.library));
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
    if (!command.stateToSave.empty()) {
        saveState(guest, command.stateToSave);
    }
    if (jobs.empty()) {
        return CExitCode::kDone;
    }
    makeFolders(command);
    return report(command, jobs,
                  renderAll(library, command.settings, jobs, command.workers, guest.name(), !command.isQuiet),
                  guest);
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(
        "Sends audio files through a VST 2.4 effect, faster than real time and with its delay taken out");
    app.footer(
        "Exit codes: 0 done, 2 command line, 3 library, 4 input, 5 output, 6 parameter, preset or state,\n"
        "7 the effect put out NaN or infinity, 130 interrupted.");
    CCommand command;
    addFileOptions(app, command);
    addSoundOptions(app, command);
    try {
        app.parse(argc, argv);
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
