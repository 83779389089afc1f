// States with names.
#include "CAudioParamConverterEnum.h"

#include "DisplayNumber.h"
#include "NumberSyntax.h"

namespace qel {

void CAudioParamConverterEnum::buildClassInfo(CClassInfo& info)
{
    CAudioParamConverter::buildClassInfo(info);
    info.bind<&CAudioParamConverterEnum::stateNames_, &CAudioParamConverterEnum::attrStateNames>(
        "state-names", "");
}

double CAudioParamConverterEnum::textToValue(const CAudioParamInfo& info, std::int32_t element,
                                             const CString& text, bool* ok) const
{
    const auto number = parseInteger(text);
    setFlag(ok, number.has_value());
    return number ? *number : minOf(info, element);
}

CString CAudioParamConverterEnum::valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                                              const CAudioParamData*, TextMode mode) const
{
    const double index = roundHalfAway(value) - roundHalfAway(minOf(info, element));
    if (!(index >= 0.0 && index < static_cast<double>(states_.size()))) {
        return "Reserve";
    }
    const State& state = states_[static_cast<std::size_t>(index)];
    return mode == TextMode::kShort ? state.shortName : state.name;
}

CError CAudioParamConverterEnum::attrStateNames()
{
    states_.clear();
    if (stateNames_.isEmpty()) {
        return {};
    }
    for (const CString& part : stateNames_.split(u';')) {
        const std::vector<CString> forms = part.split(u'|');
        states_.push_back({forms[0], forms.size() > 1 ? forms[1] : forms[0]});
    }
    return {};
}

} // namespace qel
