// Root of all process definitions of the signal graph.
#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

CError CAudioProcessDefBase::init()
{
    QEL_TRY(CObject::init(), getFullName());
    readFlags();
    multibandFreqParam_ = getAttrString("multiband-freq-param");
    multibandCountParam_ = getAttrString("multiband-count-param");
    stackParam_ = getAttrString("stack-param");
    bypassStateId_ = getAttrInt("bypass-state-id", bypassStateId_);
    stackIndexShift_ = getAttrInt("stack-index-shift", stackIndexShift_);
    if (stackIndexShift_ < 0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioProcessDefBase_init_InvalidStackIndexShift "
                 "Invalid stack index shift value '%1' specified.",
                 stackIndexShift_);
    }
    return {};
}

void CAudioProcessDefBase::readFlags()
{
    struct Flag
    {
        const char* name;
        bool CAudioProcessDefBase::*member; // holds the default until it is read
    };
    static constexpr Flag kFlags[] = {
        {"is-stacked", &CAudioProcessDefBase::isStacked_},
        {"is-smooth-update", &CAudioProcessDefBase::isSmoothUpdate_},
        {"is-multiband", &CAudioProcessDefBase::isMultiband_},
        {"is-grouped", &CAudioProcessDefBase::isGrouped_},
        {"is-whole", &CAudioProcessDefBase::isWhole_},
        {"is-terminal-whole", &CAudioProcessDefBase::isTerminalWhole_},
        {"is-prototype", &CAudioProcessDefBase::isPrototype_},
        {"is-outoforder", &CAudioProcessDefBase::isOutOfOrder_},
        {"is-group0", &CAudioProcessDefBase::isGroup0_},
        {"is-element0", &CAudioProcessDefBase::isElement0_},
        {"use-time-shift", &CAudioProcessDefBase::usesTimeShift_},
        {"is-weighted-input", &CAudioProcessDefBase::isWeightedInput_},
    };
    for (const Flag& flag : kFlags) {
        this->*flag.member = getAttrBool(flag.name, this->*flag.member);
    }
}

} // namespace qel
