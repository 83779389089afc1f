// Writes a bar of made-up drums, for machines without recorded ones.
#include "Render/AudioFile.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <numbers>
#include <random>

namespace {

constexpr int kRateHz = 48000;
constexpr double kBeatSec = 0.5;
constexpr int kBeats = 8;

std::mt19937 noiseSource(1);

double noise()
{
    return std::uniform_real_distribution<double>(-1.0, 1.0)(noiseSource);
}

// Adds `voice(seconds since the hit)` for a second from the beat on.
template <class Voice>
void hit(std::vector<double>& loop, double beat, Voice&& voice)
{
    const auto first = static_cast<std::size_t>(beat * kBeatSec * kRateHz);
    const std::size_t last = std::min(loop.size(), first + kRateHz);
    for (std::size_t i = first; i < last; ++i) {
        loop[i] += voice(static_cast<double>(i - first) / kRateHz);
    }
}

// A tone that falls from 150 Hz to 50 Hz.
double kick(double sec)
{
    constexpr double kFallSec = 0.03;
    const double cycles = 50.0 * sec + 100.0 * kFallSec * (1.0 - std::exp(-sec / kFallSec));
    return 0.8 * std::exp(-sec / 0.16) * std::sin(2.0 * std::numbers::pi * cycles);
}

double snare(double sec)
{
    return std::exp(-sec / 0.07) * (0.3 * noise() + 0.25 * std::sin(2.0 * std::numbers::pi * 190.0 * sec));
}

double hat(double sec)
{
    return 0.12 * std::exp(-sec / 0.02) * noise();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: drumfell-drumloop FILE.wav\n";
        return 2;
    }
    std::vector<double> loop(static_cast<std::size_t>(kBeats * kBeatSec * kRateHz));
    for (const double beat : {0.0, 2.5, 4.0, 5.5, 6.5}) {
        hit(loop, beat, kick);
    }
    for (const double beat : {1.0, 3.0, 5.0, 7.0, 7.75}) {
        hit(loop, beat, snare);
    }
    for (int half = 0; half < 2 * kBeats; ++half) {
        hit(loop, 0.5 * half, hat);
    }
    SndfileHandle file(argv[1], SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1, kRateHz);
    const auto count = static_cast<sf_count_t>(loop.size());
    if (file.error() || file.writef(loop.data(), count) != count) {
        std::cerr << argv[1] << ": " << file.strError() << '\n';
        return 1;
    }
    return 0;
}
