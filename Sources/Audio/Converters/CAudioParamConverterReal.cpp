// Plain numbers.
#include "CAudioParamConverterReal.h"

#include "DisplayNumber.h"

namespace qel {

void CAudioParamConverterReal::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamConverterReal;
    CAudioParamConverter::buildClassInfo(info);
    info.bind<&Self::decimals_, &Self::attrDecimals>("decimals", 7);
}

double CAudioParamConverterReal::textToValue(const CAudioParamInfo& info, std::int32_t element,
                                             const CString& text, bool* ok) const
{
    const auto number = parseTypedNumber(text, getLabel());
    setFlag(ok, number.has_value());
    return number ? *number : minOf(info, element);
}

CString CAudioParamConverterReal::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                              const CAudioParamData*, TextMode mode) const
{
    return formatDisplayNumber(value, mode == TextMode::kCompact ? 0 : decimals_);
}

CError CAudioParamConverterReal::attrDecimals()
{
    if (decimals_ < 0 || decimals_ > kMaxDecimals) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamConverterReal_attrDecimals Invalid decimals %1 specified.", decimals_);
    }
    return {};
}

} // namespace qel
