// Definition of a bypass state: when something should leave the graph, as a function of parameters.
#include "Definitions/CAudioProcessBypassStateDef.h"

#include "NumberSyntax.h"

#include <cmath>

namespace qel {

namespace {

// A parameter that stands for a switch or a choice may be a little off its whole number.
constexpr double kTolerance = 0.1;

bool parseBound(const CString& text, bool& has, std::int32_t& bound)
{
    if (text.isEmpty()) {
        return true;
    }
    const std::optional<std::int32_t> number = parseInteger(text);
    has = number.has_value();
    bound = number.value_or(0);
    return has;
}

CError readRange(const CObject& state, const std::optional<CString>& text, const char* message,
                 std::optional<CAudioIntRange>& out)
{
    if (!text) {
        return {};
    }
    out = CAudioIntRange::parse(*text);
    if (!out) {
        QEL_FAIL(state.getFullName(), message, *text);
    }
    return {};
}

} // namespace

std::optional<CAudioIntRange> CAudioIntRange::parse(const CString& text)
{
    const std::vector<CString> bounds = text.split(u';');
    if (bounds.size() != 2) {
        return std::nullopt;
    }
    CString lowText = bounds[0];
    CString highText = bounds[1];
    CAudioIntRange range;
    range.isLowInclusive = lowText.startsWith("[");
    if (range.isLowInclusive) {
        lowText = lowText.substring(1);
    }
    range.isHighInclusive = !highText.isEmpty() && highText[highText.length() - 1] == u']';
    if (range.isHighInclusive) {
        highText = highText.substring(0, highText.length() - 1);
    }
    if (!parseBound(lowText, range.hasLow, range.low) || !parseBound(highText, range.hasHigh, range.high)) {
        return std::nullopt;
    }
    return range;
}

bool CAudioIntRange::contains(double number) const
{
    const bool isAboveLow = !hasLow || (isLowInclusive ? low <= number : low < number);
    const bool isBelowHigh = !hasHigh || (isHighInclusive ? number <= high : number < high);
    return isAboveLow && isBelowHigh;
}

bool CAudioProcessBypassStateDef::Condition::holds(double paramValue) const
{
    // Rounds to even, and compares as real numbers: no value is too large for that.
    return range ? range->contains(std::nearbyint(paramValue)) : std::fabs(paramValue - value) <= kTolerance;
}

void CAudioProcessBypassStateDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioProcessBypassStateDef;
    CObject::buildClassInfo(info);
    info.bind<&Self::id_>("id", -1);
    info.bind<&Self::param_>("param", "");
    info.bind<&Self::andParam_>("and-param", std::nullopt);
    info.bind<&Self::range_>("range", std::nullopt);
    info.bind<&Self::andRange_>("and-range", std::nullopt);
    info.bind<&Self::value_>("value", 1.0);
    info.bind<&Self::andValue_>("and-value", 1.0);
    info.bind<&Self::isMultiband_>("is-multiband", false);
    info.bind<&Self::isInverted_>("is-inverted", false);
    info.bind<&Self::isGroup0_>("is-group0", false);
}

CError CAudioProcessBypassStateDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (id_ < 0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioProcessBypassStateDef_init_InvalidId Invalid identifier '%1' specified.",
                 getAttrString("id"));
    }
    if (param_.isEmpty() || (hasAndParam() && andParam_->isEmpty())) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessBypassStateDef_init_InvalidParam "
                                "Invalid parameter name specified.");
    }
    QEL_TRY(readRange(*this, range_,
                      "@qelstr_CAudioProcessBypassStateDef_init_InvalidRange "
                      "Invalid 'range' attribute value '%1' specified.",
                      first_.range),
            getFullName());
    QEL_TRY(readRange(*this, andRange_,
                      "@qelstr_CAudioProcessBypassStateDef_init_InvalidAndRange "
                      "Invalid 'and-range' attribute value '%1' specified.",
                      second_.range),
            getFullName());
    first_.value = value_;
    second_.value = andValue_;
    return {};
}

bool CAudioProcessBypassStateDef::isActive(double value, double andValue) const
{
    const bool isTrue = first_.holds(value) && (!hasAndParam() || second_.holds(andValue));
    return isTrue != isInverted_;
}

} // namespace qel
