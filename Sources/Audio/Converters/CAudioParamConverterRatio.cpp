// Compression ratios "a:b".
#include "CAudioParamConverterRatio.h"

#include "DisplayNumber.h"

#include <cmath>
#include <optional>

namespace qel {

namespace {

constexpr double kUnusableTextValue = 0.5;
constexpr double kUnityMargin = 0.001;
constexpr double kNearestToUnity = 0.999;

// The reciprocal of "a:b", or nothing unless both are positive numbers.
std::optional<double> parseRatio(const CString& text)
{
    const std::size_t colon = text.find(u':');
    if (colon == CString::kNone) {
        return std::nullopt;
    }
    const auto above = parseTypedNumber(text.substring(0, colon), {});
    const auto below = parseTypedNumber(text.substring(colon + 1), {});
    if (!above || !below || *above <= 0.0 || *below <= 0.0) {
        return std::nullopt;
    }
    const double value = *below / *above;
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

} // namespace

double CAudioParamConverterRatio::textToValue(const CAudioParamInfo&, std::int32_t, const CString& text,
                                              bool* ok) const
{
    const auto value = parseRatio(text);
    setFlag(ok, value.has_value());
    if (!value) {
        return kUnusableTextValue;
    }
    return std::abs(*value - 1.0) <= kUnityMargin ? kNearestToUnity : *value;
}

CString CAudioParamConverterRatio::valueToText(const CAudioParamInfo&, std::int32_t, double value,
                                               const CAudioParamData*, TextMode mode) const
{
    // Three digits, or two in compact text.
    const double ratio = 1.0 / value;
    const double decimalLimit = mode == TextMode::kCompact ? 100.0 : 1000.0;
    return formatDisplayNumber(ratio, roundHalfAway(10.0 * ratio) < decimalLimit ? 1 : 0) + ":1";
}

} // namespace qel
