// Frequencies in Hz.
#include "CAudioParamConverterFreq.h"

#include "DisplayNumber.h"

namespace qel {

namespace {

CString inKilohertz(double hz, int decimals)
{
    return formatDisplayNumber(hz / 1000.0, decimals) + "k";
}

// The limits are tested on what would be shown, so that 99.96 reads "100", never "100.0".
CString normalText(double hz)
{
    if (roundHalfAway(10.0 * hz) < 1000.0) {
        return formatDisplayNumber(hz, 1);
    }
    if (roundHalfAway(hz) < 1000.0) {
        return formatDisplayNumber(hz, 0);
    }
    return inKilohertz(hz, roundHalfAway(0.1 * hz) < 1000.0 ? 2 : 1);
}

CString compactText(double hz)
{
    if (roundHalfAway(10.0 * hz) < 10000.0) {
        return formatDisplayNumber(hz, 0);
    }
    return inKilohertz(hz, roundHalfAway(hz) < 100000.0 ? 1 : 0);
}

} // namespace

double CAudioParamConverterFreq::textToValue(const CAudioParamInfo& info, std::int32_t element,
                                             const CString& text, bool* ok) const
{
    const CString shown = withoutUnit(text, getLabel());
    const char16_t last = shown.isEmpty() ? u'\0' : shown[shown.length() - 1];
    const bool isKilo = last == u'k' || last == u'K';
    const auto number = parseTypedNumber(shown, isKilo ? "k" : "");
    setFlag(ok, number.has_value());
    if (!number) {
        return minOf(info, element);
    }
    return isKilo ? *number * 1000.0 : *number;
}

CString CAudioParamConverterFreq::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                              const CAudioParamData*, TextMode mode) const
{
    return mode == TextMode::kCompact ? compactText(value) : normalText(value);
}

} // namespace qel
