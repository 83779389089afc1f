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

CError readRange(const CObject& state, const char* attribute, const char* message,
                 std::optional<CAudioIntRange>& out)
{
    if (!state.findAttr(attribute)) {
        return {};
    }
    const CString text = state.getAttrString(attribute);
    out = CAudioIntRange::parse(text);
    if (!out) {
        QEL_FAIL(state.getFullName(), message, text);
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

CError CAudioProcessBypassStateDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    id_ = getAttrInt("id", id_);
    if (id_ < 0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioProcessBypassStateDef_init_InvalidId Invalid identifier '%1' specified.",
                 getAttrString("id"));
    }
    first_.param = getAttrString("param");
    second_.param = getAttrString("and-param");
    hasSecond_ = findAttr("and-param") != nullptr;
    if (first_.param.isEmpty() || (hasSecond_ && second_.param.isEmpty())) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessBypassStateDef_init_InvalidParam "
                                "Invalid parameter name specified.");
    }
    QEL_TRY(readRange(*this, "range",
                      "@qelstr_CAudioProcessBypassStateDef_init_InvalidRange "
                      "Invalid 'range' attribute value '%1' specified.",
                      first_.range),
            getFullName());
    QEL_TRY(readRange(*this, "and-range",
                      "@qelstr_CAudioProcessBypassStateDef_init_InvalidAndRange "
                      "Invalid 'and-range' attribute value '%1' specified.",
                      second_.range),
            getFullName());
    first_.value = getAttrReal("value", first_.value);
    second_.value = getAttrReal("and-value", second_.value);
    isMultiband_ = getAttrBool("is-multiband", isMultiband_);
    isInverted_ = getAttrBool("is-inverted", isInverted_);
    isGroup0_ = getAttrBool("is-group0", isGroup0_);
    return {};
}

bool CAudioProcessBypassStateDef::isActive(double value, double andValue) const
{
    const bool isTrue = first_.holds(value) && (!hasSecond_ || second_.holds(andValue));
    return isTrue != isInverted_;
}

} // namespace qel
