// Root of all process definitions of the signal graph.
#include "Definitions/CAudioProcessDefBase.h"

#include "CAudioParamDef.h"
#include "Definitions/CAudioParamAllocDef.h"

namespace qel {

void CAudioProcessDefBase::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioProcessDefBase;
    CObject::buildClassInfo(info);
    info.bind<&Self::isStacked_>("is-stacked", false);
    info.bind<&Self::isSmoothUpdate_>("is-smooth-update", false);
    info.bind<&Self::isMultiband_>("is-multiband", false);
    info.bind<&Self::isGrouped_>("is-grouped", false);
    info.bind<&Self::isWhole_>("is-whole", false);
    info.bind<&Self::isTerminalWhole_>("is-terminal-whole", false);
    info.bind<&Self::isPrototype_>("is-prototype", false);
    info.bind<&Self::isOutOfOrder_>("is-outoforder", false);
    info.bind<&Self::isGroup0_>("is-group0", false);
    info.bind<&Self::isElement0_>("is-element0", false);
    info.bind<&Self::usesTimeShift_>("use-time-shift", true);
    info.bind<&Self::isWeightedInput_>("is-weighted-input", false);
    info.bind<&Self::multibandFreqParam_>("multiband-freq-param", "");
    info.bind<&Self::multibandCountParam_>("multiband-count-param", "");
    info.bind<&Self::stackParam_>("stack-param", "");
    info.bind<&Self::xfadeLengthSec_>("xfade-length", kDefaultXfadeSec);
    info.bind<&Self::bypassStateId_>("bypass-state-id", kNoState);
    info.bind<&Self::stackIndexShift_>("stack-index-shift", 0);
}

CError CAudioProcessDefBase::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (stackIndexShift_ < 0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioProcessDefBase_init_InvalidStackIndexShift "
                 "Invalid stack index shift value '%1' specified.",
                 stackIndexShift_);
    }
    return {};
}

CError CAudioProcessDefBase::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        if (const auto* alloc = dynamic_cast<const CAudioParamAllocDef*>(getChild(i))) {
            const auto* local = dynamic_cast<const CAudioParamDef*>(findChild(alloc->getParamName()));
            slots_.push_back({alloc->getIndex(), alloc->getParamName(), local});
        }
    }
    return {};
}

const CAudioDeclarations& CAudioProcessDefBase::declarations() const
{
    std::call_once(declarationsFlag_, [this] { declarations_.collect(*this); });
    return declarations_;
}

} // namespace qel
