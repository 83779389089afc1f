// The link between the three forms of a parameter value.
#include "CAudioParamConverter.h"

#include "CAudioParamInfo.h"
#include "Math/Elementary.h"
#include "Math/Rounding.h"

#include <algorithm>
#include <cmath>

namespace qel {

// --- curve

CAudioParamCurve::CAudioParamCurve(ELaw law, double min, double max)
    : law_(law), min_(min), span_(law == ELaw::kLog ? math::log(max / min) : max - min),
      logMin_(law == ELaw::kLog ? math::log(min) : 0.0)
{}

double CAudioParamCurve::valueAt(double norm) const
{
    switch (law_) {
    case ELaw::kWhole:
        return roundHalfAway(min_ + norm * span_);
    case ELaw::kSquared:
        return min_ + norm * norm * span_;
    case ELaw::kLog:
        return math::exp(logMin_ + norm * span_);
    default:
        return min_ + norm * span_;
    }
}

double CAudioParamCurve::normOf(double value) const
{
    switch (law_) {
    case ELaw::kSquared:
        return std::sqrt(std::abs((value - min_) / span_));
    case ELaw::kLog:
        return math::log(value / min_) / span_;
    default:
        return (value - min_) / span_;
    }
}

// --- converter

void CAudioParamConverter::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CAudioParamConverter::label_>("label", CString());
}

double CAudioParamConverter::textToValueClamped(const CAudioParamInfo& info, std::int32_t element,
                                                const CString& text, bool* ok) const
{
    bool isUsable = false;
    const double value = textToValue(info, element, text, &isUsable);
    setFlag(ok, isUsable);
    const double min = minOf(info, element);
    const double max = maxOf(info, element);
    return isUsable ? std::clamp(value, std::min(min, max), std::max(min, max)) : min;
}

double CAudioParamConverter::minOf(const CAudioParamInfo& info, std::int32_t element)
{
    return info.minValues[static_cast<std::size_t>(element)];
}

double CAudioParamConverter::maxOf(const CAudioParamInfo& info, std::int32_t element)
{
    return info.maxValues[static_cast<std::size_t>(element)];
}

} // namespace qel
