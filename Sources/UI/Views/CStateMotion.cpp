// How a view gets from one state to another.
#include "CStateMotion.h"

#include "Math/Elementary.h"
#include "NumberSyntax.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

constexpr int kPercentageDecimals = 4;
// Half of the last decimal that an attribute holds.
constexpr double kResolution = 0.5e-4;

} // namespace

double easedPosition(double nowSec, double startSec, double endSec)
{
    if (!(endSec > startSec)) {
        return 1.0;
    }
    const double t = std::clamp((nowSec - startSec) / (endSec - startSec), 0.0, 1.0);
    return (math::sin(t * std::numbers::pi - std::numbers::pi / 2.0) + 1.0) * 0.5;
}

std::optional<CStateNumber> CStateNumber::parse(const CString& text)
{
    const bool isPercentage = !text.isEmpty() && text[text.length() - 1] == u'%';
    const auto number = parseReal(isPercentage ? text.substring(0, text.length() - 1) : text);
    if (!number) {
        return std::nullopt;
    }
    return CStateNumber{*number, isPercentage};
}

CStateNumber CStateNumber::parseAny(const CString& text)
{
    return parse(text).value_or(CStateNumber{});
}

CAttrValue CStateNumber::toValue() const
{
    return isPercentage ? CAttrValue(formatReal(value, kPercentageDecimals) + "%") : CAttrValue(value);
}

bool CStateNumber::isSameAs(const CStateNumber& other) const
{
    return isPercentage == other.isPercentage && std::fabs(value - other.value) <= kResolution;
}

CStateNumber CStateMorph::at(double nowSec) const
{
    const double position = easedPosition(nowSec, startSec, endSec);
    const double value = position >= 1.0 ? to.value : from + (to.value - from) * position;
    return {std::clamp(value, std::min(from, to.value), std::max(from, to.value)), to.isPercentage};
}

void CStateFade::start(const CViewLook& look, double nowSec, double durationSec)
{
    from = to;
    to = look;
    startSec = nowSec;
    endSec = nowSec + durationSec;
    isRunning = true;
    move(nowSec);
}

void CStateFade::move(double nowSec)
{
    position = easedPosition(nowSec, startSec, endSec);
    if (position >= kEndPosition) {
        from = to;
        position = 1.0;
        isRunning = false;
    }
}

} // namespace qel
