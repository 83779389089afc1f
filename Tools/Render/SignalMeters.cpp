// What is measured of a signal as it streams by.
#include "Render/SignalMeters.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include <kissfft/kissfft.hh>

namespace qel::tools {

namespace {

constexpr double kWindowSec = 0.35; // resolves 3 Hz and still follows a groove
constexpr std::size_t kHopsInWindow = 4;
constexpr double kWindowPower = 0.375; // mean square of a Hann window

std::size_t windowLength(double rateHz)
{
    return std::size_t{1} << std::max(8L, std::lround(std::log2(std::max(rateHz, 1.0) * kWindowSec)));
}

} // namespace

struct CSpectrum::CState
{
    CState(std::size_t channels, double rate)
        : rateHz(rate), length(windowLength(rate)), transform(length / 2, false), window(length),
          // A signal begins in the last quarter of the first window, so that its first sample counts in full.
          history(channels, std::vector<double>(length)), sums(channels, std::vector<double>(length / 2 + 1)),
          filled(length - length / kHopsInWindow), shaped(length), bins(length / 2 + 1)
    {
        for (std::size_t i = 0; i < length; ++i) {
            window[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) /
                                             static_cast<double>(length));
        }
    }

    double rateHz;
    std::size_t length;
    kissfft<double> transform; // of `length` real samples
    std::vector<double> window;
    CSignal history;
    CSignal sums;
    std::size_t filled;
    std::int64_t frames = 0;
    std::vector<double> shaped;
    std::vector<std::complex<double>> bins;
};

CSpectrum::CSpectrum(int channelCount, double rateHz)
    : state_(std::make_unique<CState>(static_cast<std::size_t>(channelCount), rateHz))
{}

CSpectrum::~CSpectrum() = default;
CSpectrum::CSpectrum(CSpectrum&&) noexcept = default;
CSpectrum& CSpectrum::operator=(CSpectrum&&) noexcept = default;

double CSpectrum::binHz() const
{
    return state_->rateHz / static_cast<double>(state_->length);
}

void CSpectrum::add(const CSignal& source, int offset, int frames)
{
    CState& s = *state_;
    s.frames += frames;
    for (auto left = static_cast<std::size_t>(frames); left > 0;) {
        const std::size_t count = std::min(left, s.length - s.filled);
        for (std::size_t channel = 0; channel < s.history.size(); ++channel) {
            std::copy_n(source[channel].begin() + offset, count,
                        s.history[channel].begin() + static_cast<std::ptrdiff_t>(s.filled));
        }
        offset += static_cast<int>(count);
        s.filled += count;
        left -= count;
        if (s.filled == s.length) {
            for (std::size_t channel = 0; channel < s.history.size(); ++channel) {
                addWindow(static_cast<int>(channel));
            }
            s.filled -= s.length / kHopsInWindow;
        }
    }
}

void CSpectrum::addWindow(int channel)
{
    CState& s = *state_;
    std::vector<double>& history = s.history[static_cast<std::size_t>(channel)];
    std::ranges::transform(history, s.window, s.shaped.begin(), std::multiplies<double>());
    s.transform.transform_real(s.shaped.data(), s.bins.data());
    // Bin 0 carries that of half the rate in its imaginary part.
    s.bins.back() = s.bins.front().imag();
    s.bins.front() = s.bins.front().real();
    std::vector<double>& sums = s.sums[static_cast<std::size_t>(channel)];
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const bool isSingle = i == 0 || i + 1 == sums.size();
        sums[i] += (isSingle ? 1.0 : 2.0) * std::norm(s.bins[i]);
    }
    std::rotate(history.begin(), history.begin() + static_cast<std::ptrdiff_t>(s.length / kHopsInWindow),
                history.end());
}

// Silence until the last sample has been in all its windows.
void CSpectrum::finish()
{
    const std::int64_t frames = state_->frames;
    const CSignal silence(state_->history.size(), std::vector<double>(state_->length));
    add(silence, 0, static_cast<int>(state_->length));
    state_->frames = frames;
}

std::vector<double> CSpectrum::powers(int channel) const
{
    const CState& s = *state_;
    std::vector<double> powers = s.sums[static_cast<std::size_t>(channel)];
    const double scale =
        1.0 / (static_cast<double>(s.length) * kWindowPower * static_cast<double>(kHopsInWindow) *
               static_cast<double>(std::max<std::int64_t>(1, s.frames)));
    for (double& power : powers) {
        power *= scale;
    }
    return powers;
}

std::vector<double> CSpectrum::meanPowers() const
{
    std::vector<double> mean(state_->length / 2 + 1);
    for (std::size_t channel = 0; channel < state_->sums.size(); ++channel) {
        const std::vector<double> own = powers(static_cast<int>(channel));
        std::ranges::transform(mean, own, mean.begin(), std::plus<double>());
    }
    for (double& power : mean) {
        power /= static_cast<double>(state_->sums.size());
    }
    return mean;
}

double CSpectrum::powerBelow(int channel, double hz) const
{
    const std::vector<double> all = powers(channel);
    const auto count = std::min(all.size(), static_cast<std::size_t>(std::ceil(hz / binHz())));
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += all[i];
    }
    return sum;
}

void CWaveOverview::add(const CSignal& source, int offset, int frames)
{
    const double share = 1.0 / static_cast<double>(source.size());
    for (int i = offset; i < offset + frames; ++i) {
        if (pieces_.empty() || filled_ == pieceLength_) {
            if (pieces_.size() == kMaxPieces) {
                halve();
            }
            const double first = source[0][static_cast<std::size_t>(i)];
            pieces_.push_back({first, first, 0.0});
            filled_ = 0;
        }
        CPiece& piece = pieces_.back();
        double square = 0.0;
        for (const std::vector<double>& channel : source) {
            const double sample = channel[static_cast<std::size_t>(i)];
            piece.least = std::min(piece.least, sample);
            piece.greatest = std::max(piece.greatest, sample);
            square += sample * sample;
        }
        ++filled_;
        piece.meanSquare += (square * share - piece.meanSquare) / static_cast<double>(filled_);
    }
}

// Called when all pieces are full.
void CWaveOverview::halve()
{
    for (std::size_t i = 0; i < pieces_.size() / 2; ++i) {
        const CPiece& a = pieces_[2 * i];
        const CPiece& b = pieces_[2 * i + 1];
        pieces_[i] = {std::min(a.least, b.least), std::max(a.greatest, b.greatest),
                      0.5 * (a.meanSquare + b.meanSquare)};
    }
    pieces_.resize(pieces_.size() / 2);
    pieceLength_ *= 2;
    filled_ = pieceLength_;
}

CSignalMeters::CSignalMeters(int channelCount, double rateHz)
    : rateHz_(rateHz), levels_(static_cast<std::size_t>(channelCount)), spectrum_(channelCount, rateHz)
{}

void CSignalMeters::add(const CSignal& source, int offset, int frames)
{
    frameCount_ += frames;
    for (std::size_t channel = 0; channel < levels_.size(); ++channel) {
        CChannelLevels& levels = levels_[channel];
        for (int i = offset; i < offset + frames; ++i) {
            const double sample = source[channel][static_cast<std::size_t>(i)];
            levels.peak = std::max(levels.peak, std::abs(sample));
            levels.energy += sample * sample;
        }
    }
    spectrum_.add(source, offset, frames);
    overview_.add(source, offset, frames);
}

double CSignalMeters::meanSquare(int channel) const
{
    const auto frames = static_cast<double>(std::max<std::int64_t>(1, frameCount_));
    return levels_[static_cast<std::size_t>(channel)].energy / frames;
}

} // namespace qel::tools
