// Chooses the group of channels that the controls show.
#pragma once

#include "CSelector.h"

namespace qel {

class CParamGroupSelector;

// Tag `ui:selector-group`.
//
//     group-selector            path of the CParamGroupSelector that a click sets and that is shown
//     group-selector-opposite   path of another one, to compare or copy with, which a right click sets
//                               ("is-right-click-allowed")
//     is-temp-pushed            shows the group of the other one by the button's "is-temp-pushed"
class CSelectorGroup : public CSelector
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError initChilds() override;

protected:
    CError onButton(std::int32_t index, bool isRight) override;
    CError updateActive() override;

private:
    CError eventGroupChange(const CAttrMap& parameters);
    CError attrIsTempPushed();
    CParamGroupSelector* find(const CString& path);

    // Bound attributes.
    CString selector_;
    CString opposite_;
    bool isTempPushed_ = false;
};

} // namespace qel
