// The tree node that declares a parameter.
#include "CAudioParamDef.h"

namespace qel {

CError CAudioParamDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(readFormat(), getFullName());
    readFlags();
    info_.visualName = getAttrString("visual-name");
    info_.name = getAttrString("name");
    info_.paramRegistry = getAttrString("param-registry");
    QEL_TRY(readValues(), getFullName());
    info_.valid = true;
    return {};
}

CError CAudioParamDef::readFormat()
{
    info_.esize = getAttrInt("element-size", 1);
    if (info_.esize < 1) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamDef_init_InvalidElementSize Invalid element size %1 specified.",
                 info_.esize);
    }
    const CString type = getAttrString("data-type");
    if (type == "string" || type == "str" || type == "1") {
        info_.dtype = CAudioParamInfo::kTypeString;
    }
    if (info_.isString() && info_.esize > 1) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamDef_init_ElementSizeStr Invalid element size %1 for non-float data "
                 "specified.",
                 info_.esize);
    }
    return {};
}

void CAudioParamDef::readFlags()
{
    // What is saved must be reachable by name, so persistent and storable parameters are global; a persistent
    // one is kept out of presets.
    info_.isPersistent = getAttrBool("is-persistent");
    info_.isStorable = !info_.isPersistent && getAttrBool("is-storable");
    info_.isGlobal = info_.isPersistent || info_.isStorable || getAttrBool("is-global");
    info_.isDiscrete = getAttrBool("is-discrete");
    info_.isSingleGroup = getAttrBool("is-single-group");
}

CError CAudioParamDef::readValues()
{
    info_.converterNames = getAttrString("converter").splitWords();
    QEL_TRY(info_.parseConverterNames(), getFullName());
    QEL_TRY(info_.convertMinMaxValues(getAttrString("min-values"), getAttrString("max-values")),
            getFullName());
    QEL_TRY(info_.parseDefValues(getAttrString("def-values")), getFullName());
    if (info_.defaults.empty()) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioParamDef_init_NoDefValues No default values specified.");
    }
    return {};
}

} // namespace qel
