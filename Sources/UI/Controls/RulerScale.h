// Where the marks of a scale stand.
#pragma once

#include <cstdint>
#include <vector>

namespace qel {

class CMinMax;

struct RulerMark
{
    enum Grade : std::uint32_t
    {
        kMinor,
        kMajor,
        kZero
    };
    double value = 0.0;
    double position = 0.0; // 0 at the lower end of the scale to 1
    Grade grade = kMinor;
    bool hasLabel = false; // major marks that have room for one

    bool operator==(const RulerMark&) const = default;
};

struct RulerScaleOptions
{
    double stepMinor = 3.0;
    double stepMajor = 6.0;
    double lengthPx = 0.0;
    double labelPx = 13.0;
    bool isLinear = false;   // marks follow the range but not its curve
    bool isWaveform = false; // both halves of a swing: the range upwards from the middle, and mirrored
};

// Marks at multiples of the steps, the minor ones only where there is room for them. A range in equal ratios
// has marks at 1 to 9 times each power of ten, major at 1, 2 and 5. Where labels would touch, every second,
// fourth and so on has one; the mark at 0 always has. Ascending.
std::vector<RulerMark> layoutRulerScale(const CMinMax& range, const RulerScaleOptions& options);

} // namespace qel
