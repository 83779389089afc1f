// Which group of channels the controls show.
#pragma once

#include "CObject.h"

namespace qel {

// Tag `ui:param-group-selector`.
//
//     group-index   the group, 0 (default) to the last one
//
// Raises "group-change" with the parameter "index" when it changes.
class CParamGroupSelector : public CObject
{
public:
    static constexpr const char* kGroupIndex = "group-index";
    static constexpr const char* kGroupChange = "group-change";

    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    // Never negative.
    std::int32_t getGroup() const { return group_; }
    // Sets the attribute.
    CError setGroup(std::int32_t group);

private:
    CError attrGroupIndex();

    std::int32_t group_ = 0;

    // Bound attributes.
    std::int32_t groupIndex_ = 0;
};

} // namespace qel
