// How movements of the hand become movements of a value.
#include "KnobLaws.h"

#include "Math/Elementary.h"

#include <cmath>
#include <numbers>

namespace qel {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;

double lawOf(double coarsest, double ratio, double precision)
{
    return coarsest * math::pow(ratio, std::clamp(precision, 0.0, 1.0));
}

// Radians clockwise from the right, above -pi. By the tangent of half the angle, which has no quadrants.
double angleTo(double x, double y)
{
    const double radius = std::sqrt(x * x + y * y);
    if (radius + x <= 0.0) {
        return radius == 0.0 ? 0.0 : std::numbers::pi;
    }
    return 2.0 * math::atan(y / (radius + x));
}

} // namespace

double dragStepOf(double precision)
{
    return lawOf(0.05, 0.02, precision);
}

double wheelStepOf(double precision)
{
    return lawOf(0.2, 0.025, precision);
}

double shiftFactorOf(double precision)
{
    return 1.0 / lawOf(1.5, 10.0 / 1.5, precision);
}

double CKnobZone::positionAt(double x, double y) const
{
    const double turn = angleTo(x, y) / kTurn + 0.5;
    if (turn < start && turn > end) {
        return turn <= (start + end) / 2.0 ? 1.0 : 0.0;
    }
    const double span = 1.0 + end - start;
    const double passed = turn >= start ? turn - start : turn + 1.0 - start;
    return span > 0.0 ? std::clamp(passed / span, 0.0, 1.0) : 0.0;
}

double CKnobZone::angleOf(double position) const
{
    return (start + position * (1.0 + end - start) - 0.5) * kTurn;
}

} // namespace qel
