// Times, shown in display units of `scale` seconds.
#include "CAudioParamConverterTime.h"

#include "DisplayNumber.h"

namespace qel {

void CAudioParamConverterTime::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamConverterTime;
    CAudioParamConverter::buildClassInfo(info);
    info.bind<&Self::isLog_>("is-log", false);
    info.bind<&Self::scale_>("scale", 0.001);
    info.bind<&Self::isExact_>("is-exact", false);
    info.bind<&Self::isPrecise_>("is-precise", false);
}

double CAudioParamConverterTime::textToValue(const CAudioParamInfo& info, std::int32_t element,
                                             const CString& text, bool* ok) const
{
    const auto number = parseTypedNumber(text, getLabel());
    setFlag(ok, number.has_value());
    return number ? *number * scale_ : minOf(info, element);
}

CString CAudioParamConverterTime::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                              const CAudioParamData*, TextMode mode) const
{
    const double shown = value / scale_;
    const double rounded = roundHalfAway(shown);
    if (mode == TextMode::kCompact) {
        // Thousands of units carry a mark in place of a unit of their own.
        return rounded < 100.0 ? formatDisplayNumber(shown, rounded < 10.0 ? 1 : 0)
                               : formatDisplayNumber(shown / 1000.0, 1) + "*";
    }
    const int base = isPrecise_ ? 1 : 0;
    if (isExact_ || rounded < 10.0) {
        return formatDisplayNumber(shown, base + 2);
    }
    return formatDisplayNumber(shown, rounded < 100.0 ? base + 1 : base);
}

} // namespace qel
