// The program as a shell sees it, with the test guest, the plug-in, and effects of other makers.
#include "RenderFixture.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

namespace qel::tools {

namespace {

constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

pid_t start(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), DRUMFELL_RENDER);
    const pid_t child = fork();
    if (child == 0) {
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, STDOUT_FILENO);
        dup2(quiet, STDERR_FILENO);
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    return child;
}

int finish(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace

class RenderCommand : public RenderFixture
{
protected:
    std::string at(const std::string& name) const { return (folder_ / name).string(); }
    int run(const std::vector<std::string>& arguments, const std::string& plugin = DRUMFELL_GUEST)
    {
        std::vector<std::string> all{"--plugin", plugin};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return finish(start(all));
    }
};

TEST_F(RenderCommand, RendersManyFilesAtOnceAndReportsThem)
{
    std::vector<std::string> arguments{"--output-dir",    at("out"), "--plot", at("plots"), "--json",
                                       at("report.json"), "-j",      "3",      "--preset",  "Loud",
                                       "--type",          "flac"};
    for (int i = 0; i < 5; ++i) {
        arguments.push_back(writeAudio(std::to_string(i) + ".wav", noise(2, 20000), kWav16));
    }
    ASSERT_EQ(run(arguments), 0);
    std::ifstream file(at("report.json"));
    const auto report = nlohmann::json::parse(file);
    ASSERT_EQ(report["files"].size(), 5U);
    for (const auto& one : report["files"]) {
        const double before = one["before"]["rmsDb"];
        const double after = one["after"]["rmsDb"];
        EXPECT_NEAR(after - before, 6.0, 1e-3);
        EXPECT_EQ(one["preset"], "Loud");
        const CSignal sound = readAudio(std::string(one["output"]));
        EXPECT_EQ(sound[0].size(), 20000U);
        std::array<char, 8> head{};
        std::ifstream(std::string(one["plot"]), std::ios::binary).read(head.data(), head.size());
        EXPECT_EQ(std::string(head.data() + 1, 3), "PNG");
    }
}

TEST_F(RenderCommand, TellsFailuresByItsExitCode)
{
    const std::string input = writeAudio("in.wav", noise(2, 3000), kWav16).string();
    EXPECT_EQ(run({"--list-presets", "--list-parameters"}), 0);
    EXPECT_EQ(run({}), 2);
    EXPECT_EQ(run({"--nonsense"}), 2);
    EXPECT_EQ(run({input}), 2);
    EXPECT_EQ(run({input, "-o", input}), 2);
    EXPECT_EQ(run({input, input, "--output-dir", at("out")}), 2);
    EXPECT_EQ(run({input, "-o", at("o.wav"), "--json", at("o.wav")}), 2);
    EXPECT_EQ(run({input, "-o", at("o.wav"), "--block", "0"}), 2);
    EXPECT_EQ(run({input, "-o", at("o.wav")}, at("none.so")), 3);
    EXPECT_EQ(run({at("none.wav"), "-o", at("o.wav"), "--json", at("report.json")}), 4);
    std::ifstream file(at("report.json"));
    EXPECT_EQ(nlohmann::json::parse(file)["failed"][0]["exitCode"], 4);
    std::filesystem::remove(at("report.json"));
    EXPECT_EQ(run({input, "-o", at("none/o.wav")}), 5);
    EXPECT_EQ(run({input, "--json", "-", "--plot", at("none/o.png")}), 5);
    EXPECT_EQ(run({input, "-o", at("o.wav"), "--set", "Gain=99"}), 6);
    behave("nan");
    EXPECT_EQ(run({input, "-o", at("o.wav")}), 7);
    EXPECT_EQ(fileNames(), std::set<std::string>{"in.wav"});
}

// Coders write what they hold back when their file is closed.
TEST_F(RenderCommand, NoticesWhenTheDiskIsFullAtTheVeryEnd)
{
    const std::string input = writeAudio("in.wav", noise(2, 30000), kWav16).string();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    for (const char* type : {"wav", "flac", "ogg"}) {
        const std::string output = at(std::string("o.") + type);
        ASSERT_EQ(run({input, "-o", output}), 0) << type;
        rlimit small = before;
        small.rlim_cur = std::filesystem::file_size(output) - 100;
        std::filesystem::remove(output);
        setrlimit(RLIMIT_FSIZE, &small);
        EXPECT_EQ(run({input, "-o", output}), 5) << type;
        setrlimit(RLIMIT_FSIZE, &before);
    }
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(fileNames(), std::set<std::string>{"in.wav"});
}

TEST_F(RenderCommand, CleansUpWhenInterrupted)
{
    const std::string input = writeAudio("in.wav", noise(1, 500000), kWav16).string();
    behave("slow");
    const pid_t child = start({"--plugin", DRUMFELL_GUEST, "--block", "8", input, "-o", at("o.wav")});
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (fileNames().size() < 2 && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(fileNames().size(), 2U) << "the result is being written under another name";
    kill(child, SIGINT);
    EXPECT_EQ(finish(child), 130);
    EXPECT_EQ(fileNames(), std::set<std::string>{"in.wav"});
}

TEST_F(RenderCommand, HostsEffectsOfOtherMakers)
{
    const std::string folder = "/usr/lib/vst/";
    const std::string equaliser = folder + "3BandEQ-vst.so";
    const std::string crusher = folder + "MaBitcrush-vst.so";
    if (!std::filesystem::exists(equaliser) || !std::filesystem::exists(crusher)) {
        GTEST_SKIP() << "the package dpf-plugins-vst is not installed";
    }
    const CSignal signal = noise(2, 48000);
    const std::string input = writeAudio("in.wav", signal, kWav16).string();
    // At rest the equaliser passes what comes; its master then halves it.
    ASSERT_EQ(run({input, "-o", at("flat.wav"), "--format", "float"}, equaliser), 0);
    ASSERT_EQ(run({input, "-o", at("down.wav"), "--format", "float", "--set", "Master=-6"}, equaliser), 0);
    const CSignal flat = readAudio(at("flat.wav"));
    const CSignal down = readAudio(at("down.wav"));
    for (std::size_t i = 10000; i < 48000; i += 997) {
        EXPECT_NEAR(flat[1][i], signal[1][i], 1e-4);
        EXPECT_NEAR(down[0][i], flat[0][i] * std::pow(10.0, -0.3), 1e-3);
    }
    const std::string mono = writeAudio("mono.wav", noise(1, 48000), kWav16).string();
    ASSERT_EQ(run({mono, "-o", at("crushed.wav"), "--set", "resolution=3"}, crusher), 0);
    const CSignal crushed = readAudio(at("crushed.wav"));
    const std::set<double> levels(crushed[0].begin(), crushed[0].end());
    EXPECT_LE(levels.size(), 16U) << "three bits";
}

} // namespace qel::tools
