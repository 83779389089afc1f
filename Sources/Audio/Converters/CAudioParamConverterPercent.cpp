// Fractions, shown in per cent.
#include "CAudioParamConverterPercent.h"

#include "DisplayNumber.h"

namespace qel {

double CAudioParamConverterPercent::textToValue(const CAudioParamInfo& info, std::int32_t element,
                                                const CString& text, bool* ok) const
{
    const auto number = parseTypedNumber(text, getLabel());
    setFlag(ok, number.has_value());
    return number ? *number * 0.01 : minOf(info, element);
}

CString CAudioParamConverterPercent::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                                 const CAudioParamData*, TextMode mode) const
{
    return formatDisplayNumber(value * 100.0, mode == TextMode::kCompact ? 0 : 1);
}

} // namespace qel
