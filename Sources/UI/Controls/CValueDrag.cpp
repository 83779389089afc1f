// The positions that a drag moves.
#include "CValueDrag.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// Pixels an event. What is faster is meant to be fast.
constexpr double kFlickPx = 40.0;
// Beyond the ends by no more than this is rounding.
constexpr double kEdgeSlack = 0.0001;

} // namespace

void CValueDrag::begin(Mode mode, double pivot, std::vector<double> starts)
{
    mode_ = mode;
    pivot_ = pivot;
    starts_ = std::move(starts);
    travel_ = 0.0;
    step_ = 0.0;
    speed_.reset();
}

double CValueDrag::smoothed(double px)
{
    if (!isSmoothed_) {
        return px;
    }
    const double speed = speed_.step(px);
    return std::fabs(speed) > kFlickPx ? speed + speed_.flush() : speed;
}

void CValueDrag::move(double px, double step, bool stopsAtEdges)
{
    if (step != step_) {
        anchor();
        step_ = step;
    }
    travel_ += smoothed(px);
    bool isBeyond = false;
    for (std::size_t i = 0; i < starts_.size(); ++i) {
        const double position = rawPosition(i);
        isBeyond = isBeyond || position < -kEdgeSlack || position > 1.0 + kEdgeSlack;
    }
    if (stopsAtEdges && isBeyond) {
        anchor();
        speed_.reset();
    }
}

void CValueDrag::anchor()
{
    for (std::size_t i = 0; i < starts_.size(); ++i) {
        starts_[i] = getPosition(i);
    }
    travel_ = 0.0;
}

double CValueDrag::rawPosition(std::size_t index) const
{
    const double moved = travel_ * step_;
    return mode_ == Mode::kProportional ? (1.0 + moved) * (starts_[index] - pivot_) + pivot_
                                        : starts_[index] + moved;
}

double CValueDrag::getPosition(std::size_t index) const
{
    return std::clamp(rawPosition(index), 0.0, 1.0);
}

} // namespace qel
