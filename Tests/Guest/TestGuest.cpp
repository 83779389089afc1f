// A VST 2.4 effect for tests of hosts: a gain behind a delay that it reports, with parameters of every kind
// of scale.
//
// DRUMFELL_TEST_GUEST lists how it behaves, in words: "plain" (no chunks), "reads" (sets parameters from
// texts), "lies" (says so and does not), "nan" (from sample
// 1000 on), "slow" (a millisecond a block), "single" (no double precision), "null" (makes no effect), "magic"
// (makes something else). Where a host breaks the rules of the interface, it puts out NaN, which no test
// takes for sound.
#include "Vst24.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::int32_t kId = 0x54657374; // "Test"
constexpr int kChannels = 2;
constexpr double kLongestDelay = 1000.0; // samples
constexpr int kNanFrom = 1000;

enum Parameter
{
    kGain,
    kDelay,
    kMode,
    kBend,
    kParameterCount,
};
using Values = std::array<float, kParameterCount>;

struct Program
{
    std::array<char, 24> name;
    Values values;
};

bool behaves(std::string_view word)
{
    const char* words = std::getenv("DRUMFELL_TEST_GUEST");
    return words && std::string_view(words).find(word) != std::string_view::npos;
}

class TestGuest
{
public:
    explicit TestGuest(AudioMasterCallback host) : host_(host)
    {
        effect_.magic = vst24::kMagic;
        effect_.dispatcher = &dispatched;
        effect_.processReplacing = [](AEffect* e, float** in, float** out, std::int32_t n) {
            of(e).run(in, out, n);
        };
        effect_.processDoubleReplacing = [](AEffect* e, double** in, double** out, std::int32_t n) {
            of(e).run(in, out, n);
        };
        effect_.setParameter = [](AEffect* e, std::int32_t i, float v) {
            of(e).values()[static_cast<std::size_t>(i)] = v;
        };
        effect_.getParameter = [](AEffect* e, std::int32_t i) {
            return of(e).values()[static_cast<std::size_t>(i)];
        };
        effect_.numPrograms = static_cast<std::int32_t>(programs_.size());
        effect_.numParams = kParameterCount;
        effect_.numInputs = effect_.numOutputs = kChannels;
        effect_.flags = vst24::kCanReplace | (behaves("plain") ? 0 : vst24::kProgramChunks) |
                        (behaves("single") ? 0 : vst24::kCanDoubleReplace);
        effect_.ioRatio = 1.0f;
        effect_.object = this;
        effect_.uniqueID = kId;
        effect_.version = 3;
    }
    AEffect* effect() { return &effect_; }

private:
    static TestGuest& of(AEffect* effect) { return *static_cast<TestGuest*>(effect->object); }
    Values& values() { return programs_[current_].values; }
    int delayOf(float norm) const { return static_cast<int>(std::lround(norm * kLongestDelay)); }

    static std::intptr_t dispatched(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                    std::intptr_t value, void* ptr, float)
    {
        TestGuest& self = of(effect);
        if (opcode == vst24::kClose) {
            delete &self;
            return 0;
        }
        return self.answer(opcode, index, value, static_cast<char*>(ptr));
    }

    std::intptr_t answer(std::int32_t opcode, std::int32_t index, std::intptr_t value, char* text)
    {
        const auto say = [text](std::string_view words) {
            text[words.copy(text, words.size())] = '\0';
            return 1;
        };
        const auto number = static_cast<std::size_t>(index);
        switch (opcode) {
        case vst24::kSetProgram:
            current_ = static_cast<std::size_t>(value);
            return 0;
        case vst24::kGetProgram:
            return static_cast<std::intptr_t>(current_);
        case vst24::kSetProgramName:
            std::snprintf(programs_[current_].name.data(), programs_[current_].name.size(), "%s", text);
            return 0;
        case vst24::kGetProgramName:
            return say(programs_[current_].name.data());
        case vst24::kGetParamName:
            return say(std::array{"Gain", "Delay", "Mode", "Bend"}[number]);
        case vst24::kGetParamLabel:
            return say(std::array{"dB", "smp", "", "%"}[number]);
        case vst24::kGetParamDisplay:
            return say(display(index, values()[number]));
        case vst24::kString2Parameter:
            return readText(index, text);
        case vst24::kSetBlockSize:
            longestBlock_ = static_cast<int>(value);
            return 0;
        case vst24::kSetProcessPrecision:
            isDouble_ = value != 0;
            return 1;
        case vst24::kMainsChanged:
            isRunning_ = value != 0;
            start();
            return 0;
        case vst24::kGetChunk:
            *reinterpret_cast<void**>(text) =
                index == 1 ? static_cast<void*>(&programs_[current_]) : programs_.data();
            return index == 1 ? sizeof(Program) : sizeof(programs_);
        case vst24::kSetChunk:
            return setChunk(index == 1, static_cast<std::size_t>(value), text);
        default:
            return 0;
        }
    }

    static std::string display(int index, float norm)
    {
        std::array<char, 32> text{};
        const double bent = (2.0 * norm - 1.0) * (2.0 * norm - 1.0);
        switch (index) {
        case kGain:
            std::snprintf(text.data(), text.size(), "%+.1f", 48.0 * norm - 24.0);
            break;
        case kDelay:
            std::snprintf(text.data(), text.size(), "%.0f", norm * kLongestDelay);
            break;
        case kMode:
            return std::array{"Soft", "Hard", "Pumping"}[static_cast<std::size_t>(std::lround(norm * 2.0f))];
        default:
            std::snprintf(text.data(), text.size(), "%.6f", 100.0 * bent);
        }
        return text.data();
    }

    std::intptr_t readText(int index, const char* text)
    {
        if (behaves("reads") && index == kGain) {
            values()[kGain] = static_cast<float>((std::atof(text) + 24.0) / 48.0);
            return 1;
        }
        return behaves("lies") ? 1 : 0;
    }

    std::intptr_t setChunk(bool isPreset, std::size_t size, const char* bytes)
    {
        if (size != (isPreset ? sizeof(Program) : sizeof(programs_))) {
            return 0;
        }
        std::memcpy(isPreset ? static_cast<void*>(&programs_[current_]) : programs_.data(), bytes, size);
        return 1;
    }

    void start()
    {
        for (std::vector<double>& line : lines_) {
            line.assign(static_cast<std::size_t>(kLongestDelay) + 1, 0.0);
        }
        effect_.initialDelay = delayOf(values()[kDelay]);
        position_ = 0;
        isFirst_ = true;
    }

    // The host must have started it, keep to what it announced, and count time on from block to block.
    template <class Sample>
    bool isMisused(std::int32_t frames)
    {
        const auto ask = [this](std::int32_t opcode) { return host_(&effect_, opcode, 0, 0, nullptr, 0.0f); };
        const auto* time = reinterpret_cast<const VstTimeInfo*>(ask(vst24::kMasterGetTime));
        const bool isOnTime = isFirst_ || time->samplePos == expectedPosition_;
        expectedPosition_ = time->samplePos + frames;
        isFirst_ = false;
        return !isRunning_ || isDouble_ != (sizeof(Sample) == sizeof(double)) || frames < 1 ||
               frames > longestBlock_ || !isOnTime || !(time->flags & vst24::kTempoValid) ||
               ask(vst24::kMasterGetCurrentProcessLevel) != vst24::kLevelOffline;
    }

    template <class Sample>
    void run(Sample** in, Sample** out, std::int32_t frames)
    {
        const bool isMisuse = isMisused<Sample>(frames);
        if (behaves("slow")) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        const int delay = delayOf(values()[kDelay]);
        // 0 dB is exact.
        const double gain = std::pow(10.0, (48.0 * values()[kGain] - 24.0) / 20.0);
        for (std::int32_t i = 0; i < frames; ++i, ++position_) {
            for (std::size_t channel = 0; channel < kChannels; ++channel) {
                std::vector<double>& line = lines_[channel];
                const auto at = [&](std::int64_t place) -> double& {
                    return line[static_cast<std::size_t>(place + kWrap) % line.size()];
                };
                at(position_) = in[channel][i];
                const bool isNan = isMisuse || (behaves("nan") && position_ >= kNanFrom);
                out[channel][i] = isNan ? std::numeric_limits<Sample>::quiet_NaN()
                                        : static_cast<Sample>(gain * at(position_ - delay));
            }
        }
        if (delay != effect_.initialDelay) {
            effect_.initialDelay = delay;
            host_(&effect_, vst24::kMasterIOChanged, 0, 0, nullptr, 0.0f);
        }
    }

    static constexpr std::int64_t kWrap = 1001 * 1000; // whole lines

    AudioMasterCallback host_;
    AEffect effect_{};
    std::array<Program, 3> programs_{{{{"Flat"}, {0.5f, 0.0f, 0.0f, 0.5f}},
                                      {{"Loud"}, {0.625f, 0.0f, 0.5f, 0.5f}},
                                      {{"Late"}, {0.5f, 0.3f, 0.0f, 0.5f}}}};
    std::size_t current_ = 0;
    std::array<std::vector<double>, kChannels> lines_;
    std::int64_t position_ = 0;
    double expectedPosition_ = 0.0;
    bool isFirst_ = true;
    bool isRunning_ = false;
    bool isDouble_ = false;
    int longestBlock_ = 0;
};

} // namespace

extern "C" __attribute__((visibility("default"))) AEffect* VSTPluginMain(AudioMasterCallback host)
{
    if (behaves("null") || host(nullptr, vst24::kMasterVersion, 0, 0, nullptr, 0.0f) == 0) {
        return nullptr;
    }
    if (behaves("magic")) {
        static AEffect nothing{};
        return &nothing; // which no host can close
    }
    return (new TestGuest(host))->effect();
}
