// The link between the three forms of a parameter value.
#include "CAudioParamConverter.h"

#include "CAudioParamInfo.h"
#include "Math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace qel {

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

double CAudioParamConverter::normToValue(const CAudioParamInfo& info, std::int32_t element, double norm) const
{
    const double min = minOf(info, element);
    return min + norm * (maxOf(info, element) - min);
}

double CAudioParamConverter::valueToNorm(const CAudioParamInfo& info, std::int32_t element,
                                         double value) const
{
    const double min = minOf(info, element);
    return (value - min) / (maxOf(info, element) - min);
}

double CAudioParamConverter::minOf(const CAudioParamInfo& info, std::int32_t element)
{
    return info.minValues[static_cast<std::size_t>(element)];
}

double CAudioParamConverter::maxOf(const CAudioParamInfo& info, std::int32_t element)
{
    return info.maxValues[static_cast<std::size_t>(element)];
}

double CAudioParamConverter::logNormToValue(const CAudioParamInfo& info, std::int32_t element, double norm)
{
    const double min = minOf(info, element);
    return math::exp(math::log(min) + norm * math::log(maxOf(info, element) / min));
}

double CAudioParamConverter::logValueToNorm(const CAudioParamInfo& info, std::int32_t element, double value)
{
    const double min = minOf(info, element);
    return math::log(value / min) / math::log(maxOf(info, element) / min);
}

double CAudioParamConverter::squaredNormToValue(const CAudioParamInfo& info, std::int32_t element,
                                                double norm)
{
    const double min = minOf(info, element);
    return min + norm * norm * (maxOf(info, element) - min);
}

double CAudioParamConverter::squaredValueToNorm(const CAudioParamInfo& info, std::int32_t element,
                                                double value)
{
    const double min = minOf(info, element);
    return std::sqrt(std::abs((value - min) / (maxOf(info, element) - min)));
}

} // namespace qel
