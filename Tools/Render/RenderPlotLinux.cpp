// A picture of what an effect did.
#include "Render/RenderPlot.h"

#include "Canvas/CCanvas.h"
#include "Render/CPendingFile.h"
#include "Render/RenderError.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace qel::tools {

namespace {

constexpr int kWidth = 1600;
constexpr int kHeight = 1120;
constexpr double kSmall = 15.0;
constexpr double kNormal = 18.0;
constexpr double kLarge = 26.0;

constexpr CColour kPaper{0.985, 0.982, 0.975};
constexpr CColour kPanel{1.0, 1.0, 1.0};
constexpr CColour kInk{0.16, 0.18, 0.22};
constexpr CColour kFaint{0.45, 0.48, 0.53};
constexpr CColour kGrid{0.89, 0.89, 0.90};
constexpr CColour kAxis{0.72, 0.73, 0.75};
constexpr CColour kBefore{0.29, 0.42, 0.58};
constexpr CColour kAfter{0.85, 0.36, 0.13};

constexpr CArea kBeforeArea{96, 128, 1464, 210};
constexpr CArea kAfterArea{96, 366, 1464, 210};
constexpr CArea kSpectrumArea{96, 668, 1464, 382};

constexpr double kLowestHz = 15.0;
constexpr double kHighestHz = 20000.0;
constexpr double kBandOctaves = 1.0 / 6.0;
constexpr double kShownDb = 60.0;

CColour faded(CColour colour, double alpha)
{
    colour.alpha = alpha;
    return colour;
}

std::string number(double value, int digits)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

// 1, 2 or 5 times a power of ten, so that some `count` steps make up the span.
double niceStep(double span, double count)
{
    const double raw = span / count;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= raw) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

// --- waveforms

struct CTimeScale
{
    double seconds;
    double fullScale; // amplitude at the edge of a panel
};

// Pieces that fall on one column of pixels are drawn as one.
void drawWave(CCanvas& canvas, const CArea& area, const CSignalMeters& meters, const CTimeScale& scale,
              CColour colour)
{
    const double middle = area.top + 0.5 * area.height;
    const auto yOf = [&](double amplitude) {
        return middle - amplitude / scale.fullScale * 0.5 * area.height;
    };
    const auto& pieces = meters.overview().pieces();
    const double piecesInSecond = meters.rateHz() / static_cast<double>(meters.overview().pieceLength());
    const auto columns = static_cast<int>(area.width);
    for (int column = 0; column < columns; ++column) {
        const double from = column * scale.seconds / columns * piecesInSecond;
        const double to = (column + 1) * scale.seconds / columns * piecesInSecond;
        const auto first = static_cast<std::size_t>(from);
        const auto last = std::min(pieces.size(), std::max(first + 1, static_cast<std::size_t>(to)));
        if (first >= last) {
            break;
        }
        CWaveOverview::CPiece sum = pieces[first];
        for (std::size_t i = first + 1; i < last; ++i) {
            sum.least = std::min(sum.least, pieces[i].least);
            sum.greatest = std::max(sum.greatest, pieces[i].greatest);
            sum.meanSquare += pieces[i].meanSquare;
        }
        const double rms = std::sqrt(sum.meanSquare / static_cast<double>(last - first));
        const double x = area.left + column;
        canvas.fill({x, yOf(sum.greatest), 1.0, std::max(1.0, yOf(sum.least) - yOf(sum.greatest))},
                    faded(colour, 0.45));
        canvas.fill({x, yOf(rms), 1.0, yOf(-rms) - yOf(rms)}, colour);
    }
}

void drawTimeGrid(CCanvas& canvas, const CArea& area, const CTimeScale& scale, bool isLabelled)
{
    const double step = niceStep(scale.seconds, 12.0);
    const int digits = step < 0.01 ? 3 : step < 0.1 ? 2 : step < 1.0 ? 1 : 0;
    for (int i = 0; i * step <= scale.seconds * 1.0001; ++i) {
        const double x = area.left + i * step / scale.seconds * area.width;
        canvas.line({x, area.top}, {x, area.bottom()}, kGrid);
        if (isLabelled) {
            canvas.text({x, area.bottom() + 22}, number(i * step, digits) + (i == 0 ? " s" : ""), kSmall,
                        kFaint, CAlign::kCentre);
        }
    }
}

void drawWavePanel(CCanvas& canvas, const CArea& area, const CSignalMeters& meters, const CTimeScale& scale,
                   CColour colour, const std::string& title, bool isLabelled)
{
    canvas.fill(area, kPanel);
    drawTimeGrid(canvas, area, scale, isLabelled);
    const double middle = area.top + 0.5 * area.height;
    for (const double share : {1.0, 0.5}) {
        const std::string label = number(20.0 * std::log10(share * scale.fullScale), 0);
        for (const double sign : {1.0, -1.0}) {
            const double y = middle - sign * share * 0.5 * area.height;
            canvas.line({area.left, y}, {area.right(), y}, kGrid);
            canvas.text({area.left - 10, y + 5}, label == "-0" ? "0" : label, kSmall, kFaint, CAlign::kRight);
        }
    }
    canvas.text({area.left - 10, middle + 5}, "dB", kSmall, kFaint, CAlign::kRight);
    canvas.line({area.left, middle}, {area.right(), middle}, kAxis);
    drawWave(canvas, area, meters, scale, colour);
    const COverallLevels levels = overallLevels(meters);
    canvas.text({area.left, area.top - 8}, title, kNormal, colour, CAlign::kLeft, true);
    canvas.text({area.right(), area.top - 8},
                "peak " + decibels(levels.peak * levels.peak) + " dB    RMS " + decibels(levels.power) +
                    " dB    below 120 Hz " + decibels(levels.lowPower) + " dB",
                kSmall, kFaint, CAlign::kRight);
}

// The next even step of 6 dB above all peaks, so that quiet signals can be seen.
double amplitudeRange(const CRenderResult& result)
{
    const double peak = std::max(overallLevels(result.before).peak, overallLevels(result.after).peak);
    return peak > 0.0 ? std::pow(2.0, std::clamp(std::ceil(std::log2(peak * 0.999)), -10.0, 6.0)) : 1.0;
}

// --- spectra

// Power in a band around each of the frequencies, dB. Bins count in part where the band cuts them.
std::vector<double> bandLevels(const CSpectrum& spectrum, const std::vector<double>& frequenciesHz)
{
    const std::vector<double> powers = spectrum.meanPowers();
    std::vector<double> below(powers.size() + 1);
    for (std::size_t i = 0; i < powers.size(); ++i) {
        below[i + 1] = below[i] + powers[i];
    }
    const auto powerBelow = [&](double hz) {
        const double place = std::clamp(hz / spectrum.binHz() + 0.5, 0.0, static_cast<double>(powers.size()));
        const auto bin = std::min(static_cast<std::size_t>(place), powers.size() - 1);
        return below[bin] + (place - static_cast<double>(bin)) * powers[bin];
    };
    const double halfBand = std::exp2(0.5 * kBandOctaves);
    std::vector<double> levels;
    for (const double hz : frequenciesHz) {
        const double power = powerBelow(hz * halfBand) - powerBelow(hz / halfBand);
        levels.push_back(10.0 * std::log10(std::max(power, 1e-30)));
    }
    return levels;
}

double frequencyX(double hz)
{
    return kSpectrumArea.left +
           std::log(hz / kLowestHz) / std::log(kHighestHz / kLowestHz) * kSpectrumArea.width;
}

void drawFrequencyGrid(CCanvas& canvas)
{
    const CArea& area = kSpectrumArea;
    for (double decade = 10.0; decade < kHighestHz; decade *= 10.0) {
        for (int i = 1; i < 10; ++i) {
            const double hz = decade * i;
            if (hz < kLowestHz || hz > kHighestHz) {
                continue;
            }
            const bool isMain = i == 1 || i == 2 || i == 5;
            canvas.line({frequencyX(hz), area.top}, {frequencyX(hz), area.bottom()},
                        faded(kGrid, isMain ? 1.0 : 0.5));
            if (isMain) {
                const std::string label = hz < 1000.0 ? number(hz, 0) : number(hz / 1000.0, 0) + "k";
                canvas.text({frequencyX(hz), area.bottom() + 22}, label, kSmall, kFaint, CAlign::kCentre);
            }
        }
    }
    canvas.text({frequencyX(15.0), area.bottom() + 22}, "Hz", kSmall, kFaint, CAlign::kCentre);
}

void drawSpectra(CCanvas& canvas, const CRenderResult& result)
{
    const CArea& area = kSpectrumArea;
    canvas.fill(area, kPanel);
    drawFrequencyGrid(canvas);
    std::vector<double> frequencies;
    const double highest = std::min(kHighestHz, 0.5 * result.rateHz);
    for (double x = 0.0; x <= area.width; x += 1.0) {
        frequencies.push_back(
            std::min(highest, kLowestHz * std::pow(kHighestHz / kLowestHz, x / area.width)));
    }
    const std::vector<double> before = bandLevels(result.before.spectrum(), frequencies);
    const std::vector<double> after = bandLevels(result.after.spectrum(), frequencies);
    const double top =
        std::clamp(6.0 * std::ceil((std::max(std::ranges::max(before), std::ranges::max(after)) + 1.0) / 6.0),
                   -120.0, 60.0);
    for (double db = top; db >= top - kShownDb; db -= 12.0) {
        const double y = area.top + (top - db) / kShownDb * area.height;
        canvas.line({area.left, y}, {area.right(), y}, kGrid);
        canvas.text({area.left - 10, y + 5}, number(db, 0), kSmall, kFaint, CAlign::kRight);
    }
    const auto points = [&](const std::vector<double>& levels) {
        std::vector<CPoint> traced;
        for (std::size_t i = 0; i < levels.size() && frequencies[i] < highest; ++i) {
            traced.push_back(
                {area.left + static_cast<double>(i), area.top + (top - levels[i]) / kShownDb * area.height});
        }
        return traced;
    };
    canvas.clipTo(area);
    const std::vector<CPoint> old = points(before);
    const std::vector<CPoint> now = points(after);
    // Filled is what the effect added or took away.
    std::vector<CPoint> between = now;
    between.insert(between.end(), old.rbegin(), old.rend());
    canvas.polygon(between, faded(kAfter, 0.16));
    canvas.polyline(old, kBefore, 2.2);
    canvas.polyline(now, kAfter, 2.6);
    canvas.unclip();
    canvas.text({area.left, area.top - 8}, "Spectrum", kNormal, kInk, CAlign::kLeft, true);
    canvas.text({area.left + 104, area.top - 8}, "dB in sixths of an octave", kSmall, kFaint);
    canvas.text({area.right() - 66, area.top - 8}, "before", kNormal, kBefore, CAlign::kRight, true);
    canvas.text({area.right(), area.top - 8}, "after", kNormal, kAfter, CAlign::kRight, true);
}

} // namespace

void writePlot(const CRenderResult& result, const std::string& effectName, const std::filesystem::path& path)
{
    CCanvas canvas(kWidth, kHeight, kPaper);
    canvas.text({96, 52}, result.job.input.filename().string(), kLarge, kInk, CAlign::kLeft, true);
    canvas.text({96, 80}, effectName + (result.presetName.empty() ? "" : ", " + result.presetName), kNormal,
                kFaint);
    const double seconds =
        static_cast<double>(std::max(result.before.frameCount(), result.after.frameCount())) / result.rateHz;
    const CTimeScale scale{std::max(seconds, 1.0 / result.rateHz), amplitudeRange(result)};
    drawWavePanel(canvas, kBeforeArea, result.before, scale, kBefore, "Before", false);
    drawWavePanel(canvas, kAfterArea, result.after, scale, kAfter, "After", true);
    drawSpectra(canvas, result);
    CPendingFile pending(path);
    if (!canvas.writePng(pending.path())) {
        throw CRenderError(CExitCode::kOutput, path.string() + ": the picture cannot be written");
    }
    pending.commit();
}

} // namespace qel::tools
