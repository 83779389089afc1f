// Which group of channels the controls show.
#include "CParamGroupSelector.h"

#include <algorithm>

namespace qel {

void CParamGroupSelector::buildClassInfo(CClassInfo& info)
{
    using Self = CParamGroupSelector;
    CObject::buildClassInfo(info);
    info.bind<&Self::groupIndex_, &Self::attrGroupIndex>(kGroupIndex, 0);
}

CError CParamGroupSelector::init()
{
    QEL_TRY(CObject::init(), getFullName());
    group_ = std::max(groupIndex_, 0);
    return {};
}

CError CParamGroupSelector::setGroup(std::int32_t group)
{
    return setAttribute(kGroupIndex, CAttrValue(group), true);
}

CError CParamGroupSelector::attrGroupIndex()
{
    const std::int32_t group = std::max(groupIndex_, 0);
    if (group == group_) {
        return {};
    }
    group_ = group;
    return notify(kGroupChange, {{"index", CAttrValue(group)}}, false);
}

} // namespace qel
