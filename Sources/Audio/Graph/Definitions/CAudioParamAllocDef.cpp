// The tree node that ties a parameter name to a slot of a module.
#include "Definitions/CAudioParamAllocDef.h"

namespace qel {

CError CAudioParamAllocDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    paramName_ = getAttrString("param-name");
    if (paramName_.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamAllocDef_init_InvalidParamName Invalid parameter name specified.");
    }
    index_ = getAttrInt("index", -1);
    if (index_ < 0) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamAllocDef_init_InvalidIndex Invalid index value '%1' specified.",
                 getAttrString("index"));
    }
    return {};
}

} // namespace qel
