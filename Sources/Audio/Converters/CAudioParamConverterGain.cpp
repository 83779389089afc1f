// Linear gain factors, shown in dB.
#include "CAudioParamConverterGain.h"

#include "DisplayNumber.h"
#include "Math/Elementary.h"

namespace qel {

namespace {

// dB of a factor e: 20 / ln 10.
constexpr double kDbPerNeper = 8.6858896380650368;

} // namespace

void CAudioParamConverterGain::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamConverterGain;
    CAudioParamConverter::buildClassInfo(info);
    info.bind<&Self::decimals_, &Self::attrDecimals>("decimals", 1);
    info.bind<&Self::zeroPoint_, &Self::attrZeroPoint>("zero-point", 0.5);
    info.bind<&Self::offPoint_, &Self::attrOffPoint>("off-point", -1.0);
}

double CAudioParamConverterGain::textToValue(const CAudioParamInfo& info, std::int32_t element,
                                             const CString& text, bool* ok) const
{
    const auto number = parseTypedNumber(text, getLabel());
    setFlag(ok, number.has_value());
    return number ? math::exp(*number / kDbPerNeper) : minOf(info, element);
}

CString CAudioParamConverterGain::valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                                              const CAudioParamData*, TextMode mode) const
{
    const double gain = value > 0.0 ? value : minOf(info, element);
    return formatDisplayNumber(math::log(gain) * kDbPerNeper, mode == TextMode::kCompact ? 0 : decimals_);
}

CError CAudioParamConverterGain::attrDecimals()
{
    if (decimals_ < 0 || decimals_ > kMaxDecimals) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamConverterGain_attrDecimals Invalid decimals %1 specified.", decimals_);
    }
    return {};
}

CError CAudioParamConverterGain::attrZeroPoint()
{
    if (zeroPoint_ < 0.0 || zeroPoint_ > 1.0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamConverterGain_attrZeroPoint Invalid zero point %1 specified.",
                 getAttrString("zero-point"));
    }
    return {};
}

CError CAudioParamConverterGain::attrOffPoint()
{
    if (offPoint_ < -1.0 || offPoint_ > 1.0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamConverterGain_attrOffPoint Invalid off-point %1 specified.",
                 getAttrString("off-point"));
    }
    offPointPercent_ = static_cast<std::int32_t>(roundHalfAway(offPoint_ * 100.0));
    return {};
}

} // namespace qel
