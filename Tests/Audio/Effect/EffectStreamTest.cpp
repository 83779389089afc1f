// The whole effect as a stream: block sizes, rates, oversampling, latency, and what hosts may throw at it.
#include "EffectFixture.h"

#include <algorithm>
#include <ctime>
#include <limits>

namespace qel {
namespace {

using namespace test;

class EffectStream : public EffectFixture
{
protected:
    static void append(Signals& signals, const Signals& rest)
    {
        for (std::size_t channel = 0; channel < signals.size(); ++channel) {
            signals[channel].insert(signals[channel].end(), rest[channel].begin(), rest[channel].end());
        }
    }
};

TEST_F(EffectStream, GivesTheSameSamplesAtEveryBlockSize)
{
    const Signal before = music(48000.0, 10000, 1);
    const Signal after = music(48000.0, 10000, 2);
    const Signal between = music(48000.0, 1500, 2);
    for (const int oversampling : {1, 3}) {
        Signals reference;
        std::minstd_rand random(7);
        std::vector<int> randomSizes(100);
        std::generate(randomSizes.begin(), randomSizes.end(),
                      [&] { return static_cast<int>(random() % 1500); });
        for (const std::vector<int>& sizes :
             std::vector<std::vector<int>>{{20000}, {1}, {7}, {64}, {512}, {513}, {4096}, randomSizes}) {
            CNoiseSource::restartSeeds();
            EffectHost host(busySettings());
            host.set("denorm-enable", 1.0);
            host.set(".lf-mon", 1.0); // a mute makes noise
            host.set("oversampling", oversampling);
            Signals output = host.run<double>({before, before}, sizes);
            host.set(".mix-gain", 2.0); // behind the latency, so within a step
            host.set(".xover-freq", 150.0);
            for (const char* name :
                 {".sub-enable", ".sat-enable", ".mono-enable", ".comp-enable", ".xover-type"}) {
                host.set(name, 0.0); // links and filters that fade
            }
            if (oversampling == 3) {
                host.set("oversampling", 2.0); // two streams that overlap
            }
            append(output, host.run<double>({after, after}, sizes));
            if (oversampling == 3) {
                host.set("oversampling", 4.0);
                append(output, host.run<double>({between, between}, sizes));
                host.set("oversampling", 1.0); // while the second stream is not heard yet
            }
            append(output, host.run<double>({after, after}, sizes));
            if (reference.empty()) {
                reference = output;
            }
            EXPECT_EQ(output, reference) << "blocks of " << sizes[0] << ", oversampling " << oversampling;
        }
        EXPECT_GT(peak(reference[0]), 0.1);
    }
}

TEST_F(EffectStream, FollowsAHostThroughASwitchAtEveryBlockSize)
{
    const Signal part = music(48000.0, 480, 3);
    Signals reference;
    for (const int size : {480, 60, 7}) {
        CNoiseSource::restartSeeds();
        EffectHost host(busySettings());
        Signals output = host.run<double>({part, part}, {size});
        host.set("oversampling", 2.0);
        for (int move = 0; move < 20; ++move) { // beyond the end of the switch
            for (std::int32_t i = 0; i < host.getExtParams().getCount(); ++i) {
                CAudioExtParam& param = *host.getExtParams().get(i);
                if (param.getStepCount() == 0) {
                    param.postNormalized(0.2 + 0.02 * (move + i));
                }
            }
            append(output, host.run<double>({part, part}, {size}));
        }
        if (reference.empty()) {
            reference = output;
        }
        EXPECT_EQ(output, reference) << "blocks of " << size;
    }
}

// Offline renders set everything before the first block, and some hosts between two passes.
TEST_F(EffectStream, BeginsWithItsSettingsAtEveryRate)
{
    constexpr std::size_t kBegin = 240;
    const Signal low = sine(40.0, 48000.0, 4800, 0.5);
    for (int oversampling = 1; oversampling <= 4; ++oversampling) {
        EffectHost host({{".mix-gain", linear(-24.0)}, {".lf-mon", 1}, {"oversampling", oversampling}});
        Signal output = host.run<double>({low, low}, {512})[0];
        output.resize(kBegin);
        EXPECT_LT(peak(output), 0.05) << oversampling;
        host.set(".lf-mon", 0);
        host.set(".mix-gain", 1.0);
        host.run<double>({low, low}, {512});
        host.suspend();
        host.set(".lf-mon", 1);
        host.set(".mix-gain", linear(-24.0));
        host.open(48000.0);
        output = host.run<double>({low, low}, {512})[0];
        output.resize(kBegin);
        EXPECT_LT(peak(output), 0.05) << oversampling << ", behind a stop";
    }
}

TEST_F(EffectStream, OversamplingIsTransparentAndAsLateAsReported)
{
    for (const double rateHz : {44100.0, 48000.0, 96000.0}) {
        int previous = 0;
        for (int oversampling = 1; oversampling <= 4; ++oversampling) {
            EffectHost host({{"modBypass.enable", 1}, {"oversampling", oversampling}}, rateHz);
            host.run<double>(Signals(2, Signal(8192)), {512});
            Signals input(2, Signal(4096));
            input[0][0] = 1.0;
            for (std::size_t i = 0; i < 4096; ++i) { // a pulse of some kHz, where delays are alike
                const double t = (static_cast<double>(i) - 1000.0) / 10.0;
                input[1][i] = std::exp(-0.5 * t * t);
            }
            const Signals output = host.run<double>(input, {512});
            for (double freqHz = 20.0; freqHz <= 18000.0; freqHz *= 1.05) {
                const double gain = std::abs(transform(output[0], freqHz, rateHz));
                ASSERT_NEAR(20.0 * std::log10(gain), 0.0, 0.01)
                    << freqHz << " at " << rateHz << ", " << oversampling;
            }
            double energy = 0.0;
            double moment = 0.0;
            for (std::size_t i = 0; i < 4096; ++i) {
                energy += output[1][i] * output[1][i];
                moment += output[1][i] * output[1][i] * static_cast<double>(i);
            }
            const int latency = host.getLatencySamples();
            EXPECT_NEAR(moment / energy - 1000.0, latency, 0.51) << rateHz << ", " << oversampling;
            EXPECT_EQ(latency > previous, oversampling > 1);
            previous = latency;
        }
    }
}

// --- every setting at every rate

// Any value, or one of the ends.
void randomize(EffectHost& host, std::minstd_rand& random)
{
    for (const char* name : kSoundControls) {
        const CAudioParamInfo& info = host.parameter(name).getInfo();
        const double ends[] = {info.minValues[0], info.maxValues[0]};
        std::uniform_real_distribution<double> between(ends[0], ends[1]);
        const auto choice = random() % 4;
        host.set(name, choice < 2 ? ends[choice] : between(random));
    }
}

TEST_F(EffectStream, StaysFiniteAndBoundedAtEverySettingAndRate)
{
    // Three paths of up to 24 dB, the mix gain, the output gain, and what calibration and filters add.
    constexpr double kBound = 1e5;
    const unsigned seed = 20;
    std::minstd_rand random(seed);
    for (const double rateHz : {8000.0, 11025.0, 16000.0, 22050.0, 32000.0, 44100.0, 48000.0, 88200.0,
                                96000.0, 192000.0, 384000.0}) {
        for (int oversampling = 0; oversampling <= 4; ++oversampling) {
            EffectHost host({{"oversampling", oversampling}, {"denorm-enable", 1}}, rateHz);
            for (int round = 0; round < 8; ++round) {
                randomize(host, random);
                const Signals input{music(rateHz, 2048, 3), music(rateHz, 2048, 20)};
                const Signals output = host.run<double>(input, {512, 100});
                for (const Signal& channel : output) {
                    ASSERT_LT(worstDifference(channel, Signal(channel.size())), kBound)
                        << "seed " << seed << ", " << rateHz << " Hz, " << oversampling << ", round "
                        << round;
                }
            }
        }
    }
}

TEST_F(EffectStream, SaturatesAtLowRatesToo)
{
    const auto thirdHarmonic = [](double rateHz) {
        EffectHost host({{".sat-enable", 1}, {".sat-drive", linear(12)}, {".lf-enable", 0}}, rateHz);
        const auto count = static_cast<std::size_t>(rateHz);
        const Signal out = host.run<double>({sine(50.0, rateHz, count), Signal(count)}, {512})[0];
        return lineAmplitude(out, 150.0, rateHz) / lineAmplitude(out, 50.0, rateHz);
    };
    const double usual = thirdHarmonic(48000.0);
    EXPECT_GT(usual, 0.05);
    EXPECT_NEAR(thirdHarmonic(8000.0) / usual, 1.0, 0.2);
    EXPECT_NEAR(thirdHarmonic(384000.0) / usual, 1.0, 0.2);
}

// --- silence and accidents

TEST_F(EffectStream, SilenceInGivesSilenceOut)
{
    EffectHost host(busySettings());
    host.set("denorm-enable", 1.0);
    host.run<double>({music(48000.0, 48000, 1), music(48000.0, 48000, 2)}, {512});
    const Signals rest = host.run<double>(Signals(2, Signal(10 * 48000)), {512});
    for (const Signal& channel : rest) {
        EXPECT_LT(peak(channel, 5 * 48000), 1e-9) << "the noise of 1e-11, amplified";
        EXPECT_GT(peak(channel, 5 * 48000), 0.0);
    }
}

TEST_F(EffectStream, SilenceCostsNoMoreThanMusic)
{
    EffectHost host(busySettings());
    host.set("denorm-enable", 1.0);
    const Signals tune{music(48000.0, 480000, 1), music(48000.0, 480000, 2)};
    const Signals silence(2, Signal(480000));
    double shortest[2] = {INFINITY, INFINITY};
    for (int repeat = 0; repeat < 4; ++repeat) {
        for (const bool isSilent : {false, true}) {
            const std::clock_t start = std::clock(); // of this process, whatever else runs
            host.run<double>(isSilent ? silence : tune, {512});
            shortest[isSilent] = std::min(shortest[isSilent], static_cast<double>(std::clock() - start));
        }
    }
    // Denormals would cost tens of times as much.
    EXPECT_LT(shortest[1] / shortest[0], 1.5);
    RecordProperty("silence-to-music", std::to_string(shortest[1] / shortest[0]));
}

TEST_F(EffectStream, GetsOverSamplesThatAreNoneOrFarTooLoud)
{
    Settings settings = busySettings();
    settings["oversampling"] = 2;
    constexpr std::size_t kCount = 5 * 48000;
    const Signal clean = music(48000.0, kCount, 1);
    EffectHost undisturbed(settings);
    const Signal expected = undisturbed.run<double>({clean, clean}, {512})[0];
    using Limits = std::numeric_limits<double>;
    for (const double accident :
         {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e30, -1e30, Limits::max(), 1e4}) {
        Signal disturbed = clean;
        std::fill_n(disturbed.begin() + 5000, 3, accident);
        EffectHost host(settings);
        const Signal output = host.run<double>({disturbed, clean}, {512})[0];
        EXPECT_LT(worstDifference(output, expected), 1e6) << accident;
        EXPECT_LT(worstDifference(output, expected, kCount - 48000), 1e-3) << accident;
    }
}

// As a damaged preset can bring them.
TEST_F(EffectStream, TakesValuesThatAreNoNumbersForTheDefault)
{
    const Signal input = music(48000.0, 9600, 1);
    Settings settings;
    for (const char* name :
         {".xover-freq", ".lf-gain", ".dcfilter-params.type", ".dcfilter-params.freq", ".drymix"}) {
        settings[name] = std::numeric_limits<double>::quiet_NaN();
    }
    const Signals expected = EffectHost(Settings()).run<double>({input, input}, {512});
    EXPECT_EQ(EffectHost(settings).run<double>({input, input}, {512}), expected);
}

} // namespace
} // namespace qel
