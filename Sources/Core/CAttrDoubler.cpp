// Copies one value to several objects.
#include "CAttrDoubler.h"

namespace qel {

// `value` comes last: in applyAttrs its handler needs the other two.
void CAttrDoubler::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CAttrDoubler::attr_>("attr", "");
    info.bind<&CAttrDoubler::target_, &CAttrDoubler::attrTarget>("target", "");
    info.bind<&CAttrDoubler::value_, &CAttrDoubler::attrValue>("value", "");
}

CError CAttrDoubler::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(attrTarget(), getFullName());
    if (targets_.empty()) {
        QEL_FAIL(getFullName(), "@qelstr_CAttrDoubler_init_NoTargets No target objects specified.");
    }
    for (const CString& path : targets_) {
        if (!findObject(path)) {
            QEL_FAIL(getFullName(), "@qelstr_CAttrDoubler_init_TargetNotFound Target object '%1' not found.",
                     path);
        }
    }
    return {};
}

CError CAttrDoubler::attrTarget()
{
    targets_ = target_.splitWords();
    return {};
}

CError CAttrDoubler::attrValue()
{
    // Copies: a target's handlers may change this object.
    const CString value = value_;
    const CString attr = attr_;
    for (const CString& path : std::vector<CString>(targets_)) {
        if (CObject* target = findObject(path)) {
            QEL_TRY(target->setAttribute(attr, value, true), getFullName());
        }
    }
    return {};
}

} // namespace qel
