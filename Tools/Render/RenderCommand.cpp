// The command line of drumfell-render.
#include "Render/RenderCommand.h"

#include "Render/RenderError.h"
#include "Render/RenderSystem.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

namespace qel::tools {

namespace {

namespace fs = std::filesystem;

constexpr int kLongestBlock = 1 << 20;

[[noreturn]] void misused(const std::string& text)
{
    throw CRenderError(CExitCode::kUsage, text);
}

// Arguments are UTF-8, which a path takes as the system's code page on Windows.
fs::path pathOf(const std::string& argument)
{
    return std::u8string(argument.begin(), argument.end());
}

CLI::Option* addPath(CLI::App& app, const char* names, fs::path& target, const char* help)
{
    return app.add_option_function<std::string>(
        names, [&target](const std::string& argument) { target = pathOf(argument); }, help);
}

CLI::Option* addPaths(CLI::App& app, const char* names, std::vector<fs::path>& targets, const char* help)
{
    return app.add_option_function<std::vector<std::string>>(
        names,
        [&targets](const std::vector<std::string>& arguments) {
            std::ranges::transform(arguments, std::back_inserter(targets), pathOf);
        },
        help);
}

void addSoundOptions(CLI::App& app, CRenderCommand& command)
{
    CRenderSettings& settings = command.settings;
    addPath(app, "--plugin", command.library, "VST 2.4 library; Drumfell beside this program if not given");
    addPaths(app, "--load", settings.stateFiles, "Drumfell preset or bank to load first: .cpf or .cbf")
        ->allow_extra_args(false);
    app.add_option("--preset", settings.preset, "Preset by name, its beginning, or number");
    app.add_option(
           "--set", settings.assignments,
           "NAME=VALUE, parameter by name or number; in the units shown (+12, 1.2k, Pumping) or, with an n "
           "behind, as a position from 0 to 1 (0.5n)")
        ->allow_extra_args(false);
    app.add_option("--block", settings.blockSize, "Samples in a block")
        ->capture_default_str()
        ->check(CLI::Range(1, kLongestBlock));
    app.add_flag("--double", settings.isDouble, "Process in double precision");
    app.add_option("--input-gain", settings.inputGainDb, "dB on the file before the effect")
        ->check(CLI::Range(-200.0, 200.0));
    app.add_option("--tail", settings.tailSec, "Seconds to render beyond the end of the file")
        ->check(CLI::Range(0.0, 3600.0));
}

void addFileOptions(CLI::App& app, CRenderCommand& command)
{
    static const std::map<std::string, CSampleFormat> kFormats{{"same", CSampleFormat::kSame},
                                                               {"16", CSampleFormat::kPcm16},
                                                               {"24", CSampleFormat::kPcm24},
                                                               {"32", CSampleFormat::kPcm32},
                                                               {"float", CSampleFormat::kFloat}};
    addPaths(app, "FILES", command.inputs, "Audio files: WAV, FLAC, OGG and others");
    CLI::Option* output =
        addPath(app, "-o,--output", command.output, "Result of one file; its ending is its type");
    addPath(app, "--output-dir", command.outputFolder, "Folder for the results")->excludes(output);
    app.add_option("--type", command.type, "Ending of results in place of that of the file")
        ->excludes(output);
    app.add_option("--format", command.settings.format,
                   "Samples of the result: 'same' as in the file, 16, 24, 32 or float")
        ->transform(CLI::Transformer(kFormats));
    app.add_option("-j,--jobs", command.workers, "Files rendered at the same time")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
#ifdef DRUMFELL_PLOTS
    addPath(app, "--plot", command.plot, "Picture of before and after (PNG), or a folder for them");
#endif
    addPath(app, "--json", command.json, "Report to this file; - for standard output");
    app.add_flag("--list-presets", command.listsPresets, "Print the presets");
    app.add_flag("--list-parameters", command.listsParameters, "Print the parameters as they stand");
    app.add_flag("-q,--quiet", command.isQuiet, "Print nothing but errors and what is asked for");
}

fs::path outputFor(const CRenderCommand& command, const fs::path& input)
{
    if (!command.output.empty()) {
        return command.output;
    }
    if (command.outputFolder.empty() && command.type.empty()) {
        return {};
    }
    fs::path name = input.stem();
    if (command.type.empty()) {
        name += input.extension();
    } else {
        name += (command.type.starts_with('.') ? "" : ".") + command.type;
    }
    return (command.outputFolder.empty() ? input.parent_path() : command.outputFolder) / name;
}

CRenderJob makeJob(const CRenderCommand& command, const fs::path& input)
{
    CRenderJob job{input, outputFor(command, input), {}};
    if (!command.plot.empty()) {
        fs::path own = (job.output.empty() ? job.input : job.output).stem();
        own += ".png";
        const bool isFolder = command.inputs.size() > 1 || fs::is_directory(command.plot);
        job.plot = isFolder ? command.plot / own : command.plot;
    }
    if (job.output.empty() && command.plot.empty() && command.json.empty()) {
        misused("where should the result of " + input.string() + " go? Give -o or --output-dir");
    }
    return job;
}

} // namespace

void addOptions(CLI::App& app, CRenderCommand& command)
{
    addFileOptions(app, command);
    addSoundOptions(app, command);
}

std::vector<CRenderJob> makeJobs(const CRenderCommand& command)
{
    if (command.inputs.size() > 1 && !command.output.empty()) {
        misused("-o names the result of one file; use --output-dir for several");
    }
    std::vector<CRenderJob> jobs;
    std::set<fs::path> results;
    std::error_code ignored;
    const auto claim = [&](const fs::path& result) {
        if (!result.empty() && result != "-" &&
            !results.insert(fs::weakly_canonical(systemPath(result), ignored)).second) {
            misused(result.string() + ": two results would have this name");
        }
    };
    claim(command.json);
    for (const fs::path& input : command.inputs) {
        jobs.push_back(makeJob(command, input));
        claim(jobs.back().output);
        claim(jobs.back().plot);
    }
    for (const fs::path& input : command.inputs) {
        for (const fs::path& result : results) {
            if (fs::equivalent(systemPath(input), result, ignored)) {
                misused(input.string() + ": a result would replace the file");
            }
        }
    }
    return jobs;
}

} // namespace qel::tools
