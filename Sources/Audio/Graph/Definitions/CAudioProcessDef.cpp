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
