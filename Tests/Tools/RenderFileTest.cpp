// Files through the test guest: what goes in and what comes out.
#include "RenderFixture.h"

namespace qel::tools {

namespace {

constexpr int kPcm16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
constexpr int kWav24 = SF_FORMAT_WAV | SF_FORMAT_PCM_24;
constexpr int kWavFloat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
constexpr int kFlac16 = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;

} // namespace

using RenderFile = RenderFixture;

TEST_F(RenderFile, NullsWithADelayInEveryDepthPrecisionAndBlockLength)
{
    for (const int format : {kPcm16, kWav24, kWavFloat, kFlac16}) {
        for (const int channels : {1, 2}) {
            const CSignal signal = noise(channels, 5000);
            const auto input = writeAudio("in", signal, format);
            for (const int block : {1, 64, 8192}) {
                CRenderSettings settings;
                settings.preset = "late";
                settings.blockSize = block;
                settings.isDouble = block == 64;
                const CRenderResult result = render(settings, input);
                EXPECT_EQ(readAudio(result.job.output), signal) << format << " in blocks of " << block;
                EXPECT_EQ(result.inputFormat, result.outputFormat);
                EXPECT_EQ(result.latencySamples, 300);
            }
        }
    }
}

TEST_F(RenderFile, FitsChannelsTailsAndFormats)
{
    CRenderSettings settings;
    const auto wide = writeAudio("wide.wav", noise(3, 600), kPcm16, 1000);
    EXPECT_EQ(codeOf([&] { render(settings, wide); }), CExitCode::kInput);
    const CSignal signal = noise(2, 600);
    const auto input = writeAudio("in.wav", signal, kPcm16, 1000);
    settings.tailSec = 0.25;
    CSignal expected = signal;
    for (std::vector<double>& channel : expected) {
        channel.resize(850);
    }
    EXPECT_EQ(readAudio(render(settings, input).job.output), expected);

    settings.assignments = {"Gain=+12"};
    settings.format = CSampleFormat::kPcm24;
    const CRenderResult loud = render(settings, input, "out.flac");
    EXPECT_EQ(loud.outputFormat, "Signed 24 bit PCM");
    EXPECT_EQ(readAudio(loud.job.output).size(), 2U);
    EXPECT_GT(loud.clippedCount, 0);
    EXPECT_NEAR(loud.after.peak(0) / loud.before.peak(0), std::pow(10.0, 0.6), 1e-3);
}

TEST_F(RenderFile, MeasuresWhatIsThere)
{
    constexpr double kRateHz = 48000.0;
    for (const int frames : {1000, 16384, 100000}) {
        const CSignal signal = noise(2, frames);
        CSignalMeters meters(2, kRateHz);
        for (int at = 0; at < frames; at += 1000) {
            meters.add(signal, at, std::min(1000, frames - at));
        }
        meters.finish();
        // All bins together hold the energy of every sample once.
        EXPECT_NEAR(meters.spectrum().powerBelow(1, kRateHz), meters.meanSquare(1), 1e-9);
        EXPECT_NEAR(meters.meanSquare(1), 0.25 / 3.0, 0.01);
        EXPECT_NEAR(meters.spectrum().powerBelow(1, 6000.0) / meters.meanSquare(1), 0.25, 0.05);
    }
    CSignal sine(1, std::vector<double>(96000));
    for (std::size_t i = 0; i < sine[0].size(); ++i) {
        sine[0][i] = 0.5 * std::sin(2.0 * 3.14159265358979 * 50.0 / kRateHz * static_cast<double>(i));
    }
    CSignalMeters meters(1, kRateHz);
    meters.add(sine, 0, 96000);
    meters.finish();
    EXPECT_NEAR(meters.spectrum().powerBelow(0, 120.0), 0.125, 1e-3);
    EXPECT_LT(meters.spectrum().powerBelow(0, 30.0), 1e-3);
    EXPECT_NEAR(meters.peak(0), 0.5, 1e-6);
    ASSERT_LE(meters.overview().pieces().size(), CWaveOverview::kMaxPieces);
    EXPECT_NEAR(meters.overview().pieces()[500].meanSquare, 0.125, 0.13);
}

} // namespace qel::tools
