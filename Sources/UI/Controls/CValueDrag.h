// The positions that a drag moves.
#pragma once

#include "CMovingAverage.h"

#include <vector>

namespace qel {

// One gesture over one or several positions of 0 to 1, which may belong to several parameters. Positions are
// counted from where the gesture began, so that what automation does meanwhile is not mixed in, and a group
// that has met an end returns to its former differences.
class CValueDrag
{
public:
    enum class Mode
    {
        kProportional = 0, // distances from the pivot are scaled: ratios stay
        kAdditive = 1,     // differences stay
        kRadial = 2        // all go where the caller says
    };

    void begin(Mode mode, double pivot, std::vector<double> starts);
    // Movement in pixels, up or to the right positive. A step that differs from the last one counts for this
    // movement and those after it. With `stopsAtEdges` a movement beyond an end is forgotten, so that the way
    // back begins at once; otherwise it has to be taken back first.
    void move(double px, double step, bool stopsAtEdges);
    // Spreads quick movements over a few events; flicks pass.
    void setSmoothed(bool isSmoothed) { isSmoothed_ = isSmoothed; }

    std::size_t getCount() const { return starts_.size(); }
    double getPosition(std::size_t index) const;

private:
    double rawPosition(std::size_t index) const;
    void anchor();
    double smoothed(double px);

    Mode mode_ = Mode::kAdditive;
    double pivot_ = 0.0;
    std::vector<double> starts_;
    double travel_ = 0.0; // pixels since the anchor
    double step_ = 0.0;
    bool isSmoothed_ = false;
    CMovingAverage speed_;
};

} // namespace qel
