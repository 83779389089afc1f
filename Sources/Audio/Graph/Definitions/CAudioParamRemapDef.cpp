// The tree node that redirects a parameter slot to another parameter.
#include "Definitions/CAudioParamRemapDef.h"

namespace qel {

void CAudioParamRemapDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamRemapDef;
    CObject::buildClassInfo(info);
    info.bind<&Self::origName_>("orig", "");
    info.bind<&Self::newName_>("new", "");
}

CError CAudioParamRemapDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (origName_.isEmpty()) {
        // The misspelling is part of the message.
        QEL_FAIL(getFullName(), "@qelstr_CAudioParamRemapDef_init_InvalidOrigName Invalid orignal parameter "
                                "name specified.");
    }
    if (newName_.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamRemapDef_init_InvalidNewName Invalid new parameter name specified.");
    }
    return {};
}

} // namespace qel
