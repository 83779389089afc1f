// What is measured of a signal as it streams by.
#pragma once

#include "Render/AudioFile.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qel::tools {

struct CChannelLevels
{
    double peak = 0.0;   // of full scale
    double energy = 0.0; // sum of squares
};

// The mean power spectrum of one or more channels: Hann windows that overlap by three quarters, so that every
// sample weighs the same and the powers of all bins add up to the mean square of the signal.
class CSpectrum
{
public:
    CSpectrum(int channelCount, double rateHz);
    ~CSpectrum();
    CSpectrum(CSpectrum&&) noexcept;
    CSpectrum& operator=(CSpectrum&&) noexcept;

    void add(const CSignal& source, int offset, int frames);
    void finish();

    double binHz() const;
    // Power of each bin, in mean squares; of one channel, or the mean of all. After finish().
    std::vector<double> powers(int channel) const;
    std::vector<double> meanPowers() const;
    // Mean square of what lies below the frequency.
    double powerBelow(int channel, double hz) const;

private:
    struct CState;
    void addWindow(int channel);

    std::unique_ptr<CState> state_;
};

// Least and greatest sample, and mean square, of some thousand pieces of a signal of any length, over all
// channels.
class CWaveOverview
{
public:
    struct CPiece
    {
        double least = 0.0;
        double greatest = 0.0;
        double meanSquare = 0.0;
    };
    static constexpr std::size_t kMaxPieces = 4096;

    void add(const CSignal& source, int offset, int frames);
    const std::vector<CPiece>& pieces() const { return pieces_; }
    // Samples in each piece; the last may be shorter.
    std::int64_t pieceLength() const { return pieceLength_; }

private:
    void halve();

    std::vector<CPiece> pieces_;
    std::int64_t pieceLength_ = 1;
    std::int64_t filled_ = 0; // samples in the last piece
};

// All of it at once.
class CSignalMeters
{
public:
    CSignalMeters(int channelCount, double rateHz);

    void add(const CSignal& source, int offset, int frames);
    void finish() { spectrum_.finish(); }

    int channelCount() const { return static_cast<int>(levels_.size()); }
    double rateHz() const { return rateHz_; }
    std::int64_t frameCount() const { return frameCount_; }
    double peak(int channel) const { return levels_[static_cast<std::size_t>(channel)].peak; }
    double meanSquare(int channel) const;
    const CSpectrum& spectrum() const { return spectrum_; }
    const CWaveOverview& overview() const { return overview_; }

private:
    double rateHz_;
    std::int64_t frameCount_ = 0;
    std::vector<CChannelLevels> levels_;
    CSpectrum spectrum_;
    CWaveOverview overview_;
};

} // namespace qel::tools
