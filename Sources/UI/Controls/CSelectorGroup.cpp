// Chooses the group of channels that the controls show.
#include "CSelectorGroup.h"

#include "CParamGroupSelector.h"
#include "Trace.h"

namespace qel {

namespace {

constexpr const char* kOnGroupChange = "*group-change";
constexpr const char* kIsTempPushed = "is-temp-pushed";

} // namespace

void CSelectorGroup::buildClassInfo(CClassInfo& info)
{
    using Self = CSelectorGroup;
    CSelector::buildClassInfo(info);
    info.bind<&Self::selector_>("group-selector", "");
    info.bind<&Self::opposite_>("group-selector-opposite", "");
    info.bind<&Self::isTempPushed_, &Self::attrIsTempPushed>(kIsTempPushed, false);
    info.handleEvent<&Self::eventGroupChange>(kOnGroupChange);
}

CError CSelectorGroup::initChilds()
{
    QEL_TRY(CSelector::initChilds(), getFullName());
    if (!find(selector_)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CSelectorGroup_initChilds_NoGroupSelector No group selector object '%1' found.",
                 selector_);
    }
    listenObject(selector_, CParamGroupSelector::kGroupChange, kOnGroupChange);
    if (!opposite_.isEmpty() && !find(opposite_)) {
        trace("Opposite group selector not found: " + opposite_, getFullName());
    } else if (!opposite_.isEmpty()) {
        listenObject(opposite_, CParamGroupSelector::kGroupChange, kOnGroupChange);
    }
    return {};
}

CParamGroupSelector* CSelectorGroup::find(const CString& path)
{
    return path.isEmpty() ? nullptr : dynamic_cast<CParamGroupSelector*>(findObject(path));
}

CError CSelectorGroup::eventGroupChange(const CAttrMap&)
{
    return isUp() ? updateActive() : CError();
}

CError CSelectorGroup::attrIsTempPushed()
{
    return isUp() ? updateActive() : CError();
}

CError CSelectorGroup::onButton(std::int32_t index, bool isRight)
{
    CParamGroupSelector* const selector = find(isRight ? opposite_ : selector_);
    return selector ? selector->setGroup(index) : CError();
}

CError CSelectorGroup::updateActive()
{
    const CParamGroupSelector* const selector = find(selector_);
    CError first = setActiveButton(selector ? selector->getGroup() : -1);
    const CParamGroupSelector* const opposite = isTempPushed_ ? find(opposite_) : nullptr;
    for (std::int32_t i = 0; i < getButtonCount(); ++i) {
        CView& button = *getButton(i);
        const bool isPushed = opposite && opposite->getGroup() == i;
        if (button.getAttrBool(kIsTempPushed) != isPushed) {
            collectError(first, button.setAttribute(kIsTempPushed, CAttrValue(isPushed), true));
        }
    }
    return first;
}

} // namespace qel
