// An instance of the delivered tree, and measures of what it does to sound.
#pragma once

#include "../TestRate.h"
#include "../Wrapper/WrapperRig.h"
#include "GraphHost/CKernelRecording.h"

#include <cmath>
#include <complex>
#include <map>
#include <numbers>
#include <random>

namespace qel::test {

using Signal = std::vector<double>;
using Signals = std::vector<Signal>; // by channel
using Complex = std::complex<double>;

// A value by its name below "modMain"; names that begin with a dot stand below the band processor.
using Settings = std::map<std::string, double>;

// What changes the sound and leaves its latency.
inline constexpr const char* kSoundControls[] = {
    ".xover-freq",
    ".xover-type",
    ".lf-mon",
    ".lf-enable",
    ".lf-gain",
    ".punch-enable",
    ".punch-gain",
    ".sat-enable",
    ".sat-drive",
    ".sat-mode",
    ".sat-lpf",
    ".sat-hpf",
    ".sat-gain",
    ".sub-enable",
    ".sub-gain",
    ".comp-enable",
    ".comp-drive",
    ".mix-gain",
    ".mono-enable",
    ".drymix",
    "modOutGain.gain",
    "modOutGain.mute",
    "modBypass.enable",
    ".dcfilter-params.type",
    ".dcfilter-params.freq",
};

inline double linear(double db)
{
    return std::pow(10.0, db / 20.0);
}

class EffectHost : public TestHost
{
public:
    // Without the noise against denormals, so that samples can be compared.
    EffectHost()
    {
        requireOk(init());
        requireOk(finishInit());
        set("denorm-enable", 0.0);
    }
    explicit EffectHost(const Settings& settings, double rateHz = 48000.0, int channels = 2) : EffectHost()
    {
        apply(settings);
        open(rateHz, channels);
    }

    void open(double rateHz, int channels = 2)
    {
        CAudioHostSetup setup;
        setup.sampleRateHz = rateHz;
        setup.inputCount = channels;
        setup.outputCount = channels;
        resume(setup);
    }
    void set(const std::string& name, double value, int group = 0, int entry = 0)
    {
        CAudioParamContext context;
        CAudioParam& param = parameter(name);
        if (!param.setValue(group, entry, 0, value, context)) {
            throw std::runtime_error("cannot write " + name);
        }
    }
    void apply(const Settings& settings, int group = 0)
    {
        for (const auto& [name, value] : settings) {
            set(name, value, group);
        }
    }
    // The elements of an i/o parameter.
    void setList(const std::string& name, const std::vector<double>& values)
    {
        for (std::size_t i = 0; i < values.size(); ++i) {
            set(name, values[i], 0, static_cast<int>(i));
        }
    }
    CAudioParam& parameter(const std::string& name)
    {
        const std::string path = name[0] == '.' ? "modDrumfell" + name : name;
        CAudioParam& param = getParams().getParam(CString("plugin.modMain.") + path.c_str());
        if (!param.hasInfo()) {
            throw std::runtime_error("no parameter " + name);
        }
        return param;
    }
    CKernelContext& kernels() { return getGraph().kernels; }
    // Names of the kernels that one block runs, and how often.
    std::map<std::string, int> kernelsOfBlock(int channels = 2)
    {
        CKernelRecording recording;
        kernels().setObserver(&recording);
        run<double>(Signals(static_cast<std::size_t>(channels), Signal(64, 0.1)), {64});
        kernels().setObserver(nullptr);
        std::map<std::string, int> counts;
        for (const CKernelCall& call : recording.calls()) {
            ++counts[std::string(call.entry->name).substr(CKernelContext::kNamePrefix.size())];
        }
        return counts;
    }
};

inline std::string deliveredTree()
{
    return R"(<tree><include file=")" DRUMFELL_DATA R"(/SharedData.xml"/></tree>)";
}

// Everything on.
inline Settings busySettings()
{
    return {{".punch-enable", 1},         {".punch-gain", linear(6)}, {".sat-enable", 1},
            {".sat-drive", linear(12)},   {".sat-mode", 1},           {".sub-enable", 1},
            {".sub-gain", linear(-3)},    {".comp-enable", 1},        {".comp-drive", linear(12)},
            {".mono-enable", 1},          {".drymix", 0.3},           {".dcfilter-params.type", 9},
            {".dcfilter-params.freq", 20}};
}

inline Signal sine(double freqHz, double rateHz, std::size_t count, double amplitude = 1.0)
{
    Signal signal(count);
    for (std::size_t i = 0; i < count; ++i) {
        signal[i] = amplitude * std::sin(2.0 * std::numbers::pi * freqHz * static_cast<double>(i) / rateHz);
    }
    return signal;
}

inline Signal operator+(Signal a, const Signal& b)
{
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] += b[i];
    }
    return a;
}

// Beats of a decaying low sine under a quiet high one and noise, twice a second: something of everything.
inline Signal music(double rateHz, std::size_t count, unsigned seed)
{
    std::minstd_rand random(seed);
    std::uniform_real_distribution<double> noise(-0.02, 0.02);
    Signal signal(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / rateHz;
        const double beat = std::fmod(t, 0.5);
        const double level = std::min(beat / 0.002, 1.0) * std::exp(-6.0 * beat);
        signal[i] = 0.7 * level * std::sin(2.0 * std::numbers::pi * (60.0 + seed) * beat) +
                    0.1 * std::sin(2.0 * std::numbers::pi * 3000.0 * t) + noise(random);
    }
    return signal;
}

inline double peak(const Signal& signal, std::size_t from = 0)
{
    double highest = 0.0;
    for (std::size_t i = from; i < signal.size(); ++i) {
        highest = std::max(highest, std::fabs(signal[i]));
    }
    return highest;
}

inline double worstDifference(const Signal& a, const Signal& b, std::size_t from = 0)
{
    double worst = a.size() == b.size() ? 0.0 : INFINITY;
    for (std::size_t i = from; i < std::min(a.size(), b.size()); ++i) {
        const double difference = std::fabs(a[i] - b[i]);
        worst = std::isnan(difference) ? INFINITY : std::max(worst, difference);
    }
    return worst;
}

// Sum of signal times e^-jwt.
inline Complex transform(const Signal& signal, double freqHz, double rateHz, std::size_t from = 0)
{
    const double w = 2.0 * std::numbers::pi * freqHz / rateHz;
    Complex sum = 0.0;
    for (std::size_t i = from; i < signal.size(); ++i) {
        sum += signal[i] * std::polar(1.0, -w * static_cast<double>(i));
    }
    return sum;
}

// Amplitude of a sine in the second half of a signal, through a Hann window that keeps other lines out.
inline double lineAmplitude(const Signal& signal, double freqHz, double rateHz)
{
    const std::size_t from = signal.size() / 2;
    Signal windowed(signal.size());
    for (std::size_t i = from; i < signal.size(); ++i) {
        const double part = static_cast<double>(i - from) / static_cast<double>(signal.size() - from);
        windowed[i] = signal[i] * (1.0 - std::cos(2.0 * std::numbers::pi * part));
    }
    return 2.0 * std::abs(transform(windowed, freqHz, rateHz, from)) /
           static_cast<double>(signal.size() - from);
}

} // namespace qel::test
