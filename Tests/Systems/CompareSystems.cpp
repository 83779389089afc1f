// Tells whether two systems make the same sounds and read each other's states: "write FOLDER" on one of them,
// "check FOLDER" on the other.
#include "HostRig.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

using namespace qel::test;
namespace fs = std::filesystem;

namespace {

constexpr std::int32_t kOversampling = 1;
constexpr std::array<float, 5> kOversamplingPositions{0.0f, 0.25f, 0.5f, 0.75f, 1.0f};
constexpr std::size_t kLength = 12000;

// Beats of a falling saw with noise, of whole numbers alone: no system rounds them otherwise.
Channels<double> beats()
{
    Channels<double> signal(2, std::vector<double>(kLength));
    std::minstd_rand noise(1);
    for (std::size_t channel = 0; channel < signal.size(); ++channel) {
        std::uint32_t phase = 0;
        for (std::size_t i = 0; i < kLength; ++i) {
            const auto beat = static_cast<std::uint32_t>(i % 6000);
            phase += 4000000 + (6000 - beat) * 1500;
            const auto saw = static_cast<std::int32_t>(phase) >> 16;
            const auto hiss = static_cast<std::int32_t>(noise() % 4096) - 2048;
            const auto level = static_cast<std::int32_t>(6000 - beat);
            signal[channel][i] = static_cast<double>(saw * level / 6000 + hiss) / 65536.0;
        }
    }
    return signal;
}

// FNV-1a
std::uint64_t sumOf(const Channels<double>& signal)
{
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const std::vector<double>& channel : signal) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(channel.data());
        for (std::size_t i = 0; i < channel.size() * sizeof(double); ++i) {
            sum = (sum ^ bytes[i]) * 0x100000001B3;
        }
    }
    return sum;
}

// A line a program and oversampling.
std::vector<std::string> sounds()
{
    const Channels<double> input = beats();
    std::vector<std::string> lines;
    const int count = Host()->numPrograms;
    for (std::int32_t program = 0; program < count; ++program) {
        for (const float position : kOversamplingPositions) {
            Host host;
            host.call(vst24::kSetProgram, 0, program);
            host.set(kOversampling, position);
            host.setPrecision(1);
            host.start();
            const Channels<double> output = host.run(input, {512, 1, 77});
            std::ostringstream line;
            line << host.text(vst24::kGetProgramName, 64) << " at "
                 << host.text(vst24::kGetParamDisplay, 64, kOversampling) << ": " << std::hex << sumOf(output)
                 << (output == input ? " (unchanged)" : "");
            lines.push_back(line.str());
        }
    }
    return lines;
}

// Presets, and the bank that holds them all.
std::vector<std::pair<std::string, Bytes>> states()
{
    std::vector<std::pair<std::string, Bytes>> states;
    Host host;
    for (std::int32_t program = 0; program < host->numPrograms; ++program) {
        host.call(vst24::kSetProgram, 0, program);
        if (program % 2) {
            host.setAll(static_cast<unsigned>(program));
        }
        states.emplace_back("preset" + std::to_string(program), host.chunk(true));
    }
    states.emplace_back("bank", host.chunk(false));
    return states;
}

Bytes readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& folder)
{
    fs::create_directories(folder);
    std::ofstream text(folder / "sounds.txt", std::ios::binary);
    for (const std::string& line : sounds()) {
        text << line << '\n';
    }
    for (const auto& [name, bytes] : states()) {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
}

int check(const fs::path& folder)
{
    int passed = 0;
    int failed = 0;
    const auto expect = [&](bool isRight, const std::string& what) {
        ++(isRight ? passed : failed);
        if (!isRight) {
            std::cout << "differs: " << what << '\n';
        }
    };
    std::ifstream text(folder / "sounds.txt", std::ios::binary);
    for (const std::string& line : sounds()) {
        std::string other;
        std::getline(text, other);
        expect(line == other, line + ", there " + other);
    }
    for (const auto& [name, own] : states()) {
        const Bytes other = readFile(folder / name);
        Host host;
        expect(host.load(other, name != "bank") == 1, name + " is not accepted");
        expect(host.chunk(name != "bank") == other, name + " is not kept");
        expect(own == other, name);
    }
    std::cout << passed << " passed, " << failed << " failed\n";
    return failed == 0 && passed > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc == 3 ? argv[1] : "";
    if (command == "write") {
        write(argv[2]);
        return 0;
    }
    if (command == "check") {
        return check(argv[2]);
    }
    std::cerr << "usage: drumfell-compare write|check FOLDER\n";
    return 2;
}
