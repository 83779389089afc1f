// A small host: loads the library as any other would and sees nothing of it but its two entries.
#pragma once

#include "Vst24.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace qel::test {

using Bytes = std::vector<std::uint8_t>;
template <class Sample>
using Channels = std::vector<std::vector<Sample>>;

// Where the library finds and keeps its settings on Linux, as of the first effect: nobody's, unless said
// otherwise.
inline std::string dataFolder = "/nonexistent";

VstPluginEntry loadEntry(const char* name = "VSTPluginMain");
// As when a host ends, all of whose effects are closed; the next effect loads the library anew.
void unloadLibrary();

// What the host says of itself, and what it was told.
struct HostTraits
{
    std::int32_t version = 2400;
    std::string vendor = "Maker";
    std::string product = "Host";
    bool answersOnlyVersion = false;
};

// One effect and its host. Closes it at the end, unless the test has done so.
class Host
{
public:
    explicit Host(HostTraits traits = {});
    ~Host() { close(); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    AEffect* operator->() { return effect_; }
    AEffect* effect() { return effect_; }
    std::intptr_t call(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
                       void* ptr = nullptr, float opt = 0.0f)
    {
        return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
    }
    // The text of an opcode that writes one. Fails the test if it runs past `limit` bytes.
    std::string text(std::int32_t opcode, std::size_t limit, std::int32_t index = 0, std::intptr_t value = 0);
    void close();

    void start(float rateHz = 48000.0f, std::int32_t blockSize = 512);
    void stop() { call(vst24::kMainsChanged); }
    void set(std::int32_t index, float value) { effect_->setParameter(effect_, index, value); }
    float get(std::int32_t index) { return effect_->getParameter(effect_, index); }
    // Every parameter to a value of its own.
    void setAll(unsigned seed);
    std::vector<float> getAll();

    void setPrecision(int precision) { call(vst24::kSetProcessPrecision, 0, precision); }
    void processBlock(float** in, float** out, int count)
    {
        effect_->processReplacing(effect_, in, out, count);
    }
    void processBlock(double** in, double** out, int count)
    {
        effect_->processDoubleReplacing(effect_, in, out, count);
    }
    // Runs the input through in blocks of the sizes, again and again; missing channels are null.
    template <class Sample>
    Channels<Sample> run(const Channels<Sample>& input, const std::vector<int>& sizes, bool inPlace = false);

    Bytes chunk(bool isPreset);
    std::intptr_t load(Bytes bytes, bool isPreset)
    {
        return call(vst24::kSetChunk, isPreset, static_cast<std::intptr_t>(bytes.size()), bytes.data());
    }

    // --- what the effect told
    std::atomic<int> automations{0};
    std::atomic<int> displayUpdates{0};
    std::atomic<int> ioChanges{0};
    // Called in between, as hosts do that run their own loop there.
    std::function<void()> whenAutomated;
    std::function<void()> whenUpdated;

private:
    static std::intptr_t callback(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                  std::intptr_t value, void* ptr, float opt);

    HostTraits traits_;
    AEffect* effect_ = nullptr;
};

template <class Sample>
Channels<Sample> Host::run(const Channels<Sample>& input, const std::vector<int>& sizes, bool inPlace)
{
    const std::size_t length = input[0].size();
    Channels<Sample> output = inPlace ? input : Channels<Sample>(input.size(), std::vector<Sample>(length));
    Channels<Sample> copy = input;
    std::size_t turn = 0;
    for (std::size_t start = 0; start < length;) {
        const auto wanted = static_cast<std::size_t>(sizes[turn++ % sizes.size()]);
        const std::size_t count = std::min(wanted, length - start);
        std::vector<Sample*> in(static_cast<std::size_t>(effect_->numInputs));
        std::vector<Sample*> out(static_cast<std::size_t>(effect_->numOutputs));
        for (std::size_t channel = 0; channel < input.size(); ++channel) {
            in[channel] = (inPlace ? output : copy)[channel].data() + start;
            out[channel] = output[channel].data() + start;
        }
        processBlock(in.data(), out.data(), static_cast<int>(count));
        start += count;
    }
    return output;
}

// Drum-like: bursts of a falling tone over noise, different in each channel.
template <class Sample>
Channels<Sample> drums(std::size_t length, std::size_t channels = 2);

// What a function gives in a process of its own, so that whatever is counted process-wide stands where it
// stood for another one. A crash there fails the test. Not on Windows, which cannot split a process.
std::vector<double> inChild(const std::function<std::vector<double>()>& work);

// All channels one after another.
template <class Sample>
std::vector<double> flat(const Channels<Sample>& channels)
{
    std::vector<double> all;
    for (const auto& channel : channels) {
        all.insert(all.end(), channel.begin(), channel.end());
    }
    return all;
}

} // namespace qel::test
