// The mean of the latest numbers.
#pragma once

#include <array>
#include <cstddef>

namespace qel {

// Of the last kCount numbers, those before the first counting as 0: what is put in comes out spread over
// kCount steps, and none of it is lost.
class CMovingAverage
{
public:
    static constexpr std::size_t kCount = 4;

    void reset() { *this = {}; }
    // Takes the next number and gives the mean.
    double step(double number)
    {
        values_[next_] = number;
        next_ = (next_ + 1) % kCount;
        double sum = 0.0;
        for (const double value : values_) {
            sum += value;
        }
        return sum / kCount;
    }
    // All that has not come out yet, at once.
    double flush()
    {
        double rest = 0.0;
        for (std::size_t age = 0; age < kCount; ++age) {
            const double value = values_[(next_ + kCount - 1 - age) % kCount];
            rest += value * static_cast<double>(kCount - 1 - age) / kCount;
        }
        reset();
        return rest;
    }

private:
    std::array<double, kCount> values_{};
    std::size_t next_ = 0;
};

} // namespace qel
