// Where the marks of a scale stand.
#include "RulerScale.h"

#include "CMinMax.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {

namespace {

constexpr double kLeastMarkPx = 3.0;
constexpr int kMaxMarks = 1000;
constexpr double kSame = 1e-9;
// More than any number of marks can be halved.
constexpr int kMaxLevels = 64;

// A mark, and the levels of thinning below which it has a label.
struct Step : RulerMark
{
    int labelLevels = 0;
};

Step stepAt(double value, bool isMajor, int labelLevels)
{
    Step step;
    step.value = value;
    step.grade = value == 0.0 ? RulerMark::kZero : isMajor ? RulerMark::kMajor : RulerMark::kMinor;
    step.labelLevels = isMajor ? labelLevels : 0;
    return step;
}

// How often 2 divides n; the mark at 0 keeps its label at any level.
int levelsOf(std::int64_t n)
{
    if (n == 0) {
        return kMaxLevels;
    }
    int levels = 1;
    for (; n % 2 == 0; n /= 2) {
        ++levels;
    }
    return levels;
}

std::vector<Step> evenSteps(double min, double max, double minor, double major)
{
    std::vector<Step> steps;
    const double distance = minor > 0.0 ? minor : major;
    if (!(distance > 0.0) || !((max - min) / distance < kMaxMarks)) {
        return steps;
    }
    const auto first = static_cast<std::int64_t>(std::ceil(min / distance - kSame));
    const auto last = static_cast<std::int64_t>(std::floor(max / distance + kSame));
    for (std::int64_t n = first; n <= last; ++n) {
        const double value = static_cast<double>(n) * distance;
        const double ratio = major > 0.0 ? value / major : 0.5;
        const bool isMajor = std::fabs(ratio - std::round(ratio)) < kSame;
        steps.push_back(stepAt(value, isMajor, levelsOf(std::llround(ratio))));
    }
    return steps;
}

std::vector<Step> ratioSteps(double min, double max)
{
    std::vector<Step> steps;
    const auto firstPower = static_cast<int>(std::floor(std::log10(min)));
    const auto lastPower = static_cast<int>(std::floor(std::log10(max) + kSame));
    for (int power = firstPower; power <= lastPower; ++power) {
        for (int digit = 1; digit <= 9; ++digit) {
            const double value = digit * std::pow(10.0, power);
            if (value >= min * (1.0 - kSame) && value <= max * (1.0 + kSame)) {
                steps.push_back(stepAt(value, digit == 1 || digit == 2 || digit == 5,
                                       digit == 1 ? 1 + levelsOf(power) : 1));
            }
        }
    }
    return steps;
}

// Upwards and downwards from the middle.
std::vector<Step> mirrored(const std::vector<Step>& steps)
{
    std::vector<Step> both;
    for (std::size_t i = steps.size(); i-- > 0;) {
        if (steps[i].position > 0.0) {
            both.push_back(steps[i]);
            both.back().position = 0.5 - 0.5 * steps[i].position;
        }
    }
    for (const Step& step : steps) {
        both.push_back(step);
        both.back().position = 0.5 + 0.5 * step.position;
    }
    return both;
}

// The least distance between neighbouring marks for which `isMeant` holds; in pixels.
template <class IsMeant>
double leastDistancePx(const std::vector<Step>& steps, double lengthPx, IsMeant isMeant)
{
    double least = std::numeric_limits<double>::max();
    const Step* before = nullptr;
    for (const Step& step : steps) {
        if (isMeant(step)) {
            least = before ? std::min(least, (step.position - before->position) * lengthPx) : least;
            before = &step;
        }
    }
    return least;
}

} // namespace

std::vector<RulerMark> layoutRulerScale(const CMinMax& range, const RulerScaleOptions& options)
{
    const double min = range.getMin();
    const double max = range.getMax();
    if (!(max > min) || !(options.lengthPx > 0.0)) {
        return {};
    }
    std::vector<Step> steps =
        range.isLog() ? ratioSteps(min, max) : evenSteps(min, max, options.stepMinor, options.stepMajor);
    for (Step& step : steps) {
        step.position = options.isLinear ? range.toLinearPosition(step.value) : range.toPosition(step.value);
    }
    if (options.isWaveform) {
        steps = mirrored(steps);
    }
    if (leastDistancePx(steps, options.lengthPx, [](const Step&) { return true; }) < kLeastMarkPx) {
        std::erase_if(steps, [](const Step& step) { return step.grade == RulerMark::kMinor; });
    }
    int level = 0;
    const auto hasLabel = [&](const Step& step) { return step.labelLevels > level; };
    while (level < kMaxLevels && leastDistancePx(steps, options.lengthPx, hasLabel) < options.labelPx) {
        ++level;
    }

    std::vector<RulerMark> marks;
    for (Step& step : steps) {
        step.hasLabel = hasLabel(step);
        marks.push_back(step);
    }
    return marks;
}

} // namespace qel
