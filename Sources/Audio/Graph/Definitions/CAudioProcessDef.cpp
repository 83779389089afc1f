// Definition of a compound process: children, links between them, bypass states.
#include "Definitions/CAudioProcessDef.h"

#include "Definitions/CAudioProcessBypassStateDef.h"
#include "Definitions/CAudioProcessLinkDef.h"

#include <algorithm>

namespace qel {

void CAudioProcessDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioProcessDef;
    CAudioProcessDefBase::buildClassInfo(info);
    info.bind<&Self::isAutoLinks_>("is-auto-links", true);
    info.bind<&Self::isOverlapped_>("is-overlapped", false);
}

// Better no instance than one that ignores what its tree asks for.
CError CAudioProcessDef::checkShape() const
{
    if (isMultiband() || !multibandFreqParam().isEmpty() || !multibandCountParam().isEmpty()) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessDef_checkShape_Multiband "
                                "A process that is split into frequency bands is not supported.");
    }
    if (isStacked() && !isGrouped()) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessDef_checkShape_NotGrouped "
                                "A stacked process that is not grouped by channel is not supported.");
    }
    if (!stackParam().isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioProcessDef_checkShape_StackParam "
                 "A stack whose elements are chosen by a parameter ('%1') is not supported.",
                 stackParam());
    }
    return {};
}

CError CAudioProcessDef::initChilds()
{
    QEL_TRY(CAudioProcessDefBase::initChilds(), getFullName());
    sortChildren();
    for (const CAudioProcessLinkDef* link : linkDefs_) {
        QEL_TRY(link->checkNames(*this), getFullName());
    }
    return {};
}

void CAudioProcessDef::sortChildren()
{
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        const CObject* child = getChild(i);
        if (const auto* process = dynamic_cast<const CAudioProcessDefBase*>(child)) {
            processDefs_.push_back(process);
        } else if (const auto* link = dynamic_cast<const CAudioProcessLinkDef*>(child)) {
            linkDefs_.push_back(link);
        } else if (const auto* state = dynamic_cast<const CAudioProcessBypassStateDef*>(child)) {
            bypassStateDefs_.push_back(state);
        }
    }
}

const CAudioProcessDefBase* CAudioProcessDef::findProcessDef(const CString& name) const
{
    const auto entry = std::find_if(processDefs_.begin(), processDefs_.end(),
                                    [&](const auto* def) { return def->getName() == name; });
    return entry == processDefs_.end() ? nullptr : *entry;
}

} // namespace qel
