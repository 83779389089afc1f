// The tree node that ties a parameter name to a slot of a module.
#include "Definitions/CAudioParamAllocDef.h"

namespace qel {

void CAudioParamAllocDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamAllocDef;
    CObject::buildClassInfo(info);
    info.bind<&Self::paramName_>("param-name", "");
    info.bind<&Self::index_>("index", -1);
}

CError CAudioParamAllocDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (paramName_.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamAllocDef_init_InvalidParamName Invalid parameter name specified.");
    }
    if (index_ < 0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamAllocDef_init_InvalidIndex Invalid index value '%1' specified.",
                 getAttrString("index"));
    }
    return {};
}

} // namespace qel
