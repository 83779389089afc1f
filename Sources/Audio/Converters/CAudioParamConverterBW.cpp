// Bandwidths in octaves.
#include "CAudioParamConverterBW.h"

#include "DisplayNumber.h"

namespace qel {

namespace {

constexpr double kUnusableTextOctaves = 0.001;

} // namespace

double CAudioParamConverterBW::textToValue(const CAudioParamInfo&, std::int32_t, const CString& text,
                                           bool* ok) const
{
    const auto number = parseTypedNumber(text, getLabel());
    setFlag(ok, number.has_value());
    return number.value_or(kUnusableTextOctaves);
}

CString CAudioParamConverterBW::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                            const CAudioParamData*, TextMode) const
{
    return formatDisplayNumber(value, 2);
}

} // namespace qel
