// The tree node that redirects a parameter slot to another parameter.
#include "Definitions/CAudioParamRemapDef.h"

namespace qel {

CError CAudioParamRemapDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    origName_ = getAttrString("orig");
    if (origName_.isEmpty()) {
        // The misspelling is part of the message.
        QEL_FAIL(getFullName(), "@qelstr_CAudioParamRemapDef_init_InvalidOrigName Invalid orignal parameter "
                                "name specified.");
    }
    newName_ = getAttrString("new");
    if (newName_.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRemapDef_init_InvalidNewName Invalid new parameter name specified.");
    }
    return {};
}

} // namespace qel
