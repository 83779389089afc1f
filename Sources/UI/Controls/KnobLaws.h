// How movements of the hand become movements of a value.
#pragma once

#include <algorithm>

namespace qel {

// The preferences of the user go from 0 (coarse) to 1 (fine); positions are those of a parameter, 0 to 1.

// Position a pixel of a drag, 0.05 to 0.001.
double dragStepOf(double precision);
// Position a notch of the wheel, 0.2 to 0.005.
double wheelStepOf(double precision);
// What steps shrink by while Shift is held, 1 / 1.5 to 0.1.
double shiftFactorOf(double precision);

// The part of a turn, clockwise from the left, that a knob turns over: from `start` through the top to `end`.
// Between end and start, below, lies a dead gap.
struct CKnobZone
{
    double start = 0.875;
    double end = 0.625;

    // The position at a point as seen from the knob's centre, y downwards. The gap gives the nearer end, its
    // middle 1.
    double positionAt(double x, double y) const;
    // The way back: a position's angle, in radians clockwise from the right.
    double angleOf(double position) const;
};

} // namespace qel
