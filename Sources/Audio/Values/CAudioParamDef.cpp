// The tree node that declares a parameter.
#include "CAudioParamDef.h"

namespace qel {

void CAudioParamDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamDef;
    CObject::buildClassInfo(info);
    info.bind<&Self::visualName_>("visual-name", "");
    info.bind<&Self::registry_>("param-registry", "");
    info.bind<&Self::elementSize_>("element-size", 1);
    info.bind<&Self::dataType_>("data-type", "");
    info.bind<&Self::isPersistent_>("is-persistent", false);
    info.bind<&Self::isStorable_>("is-storable", false);
    info.bind<&Self::isGlobal_>("is-global", false);
    info.bind<&Self::isDiscrete_>("is-discrete", false);
    info.bind<&Self::isSingleGroup_>("is-single-group", false);
    info.bind<&Self::converter_>("converter", "");
    info.bind<&Self::minValues_>("min-values", "");
    info.bind<&Self::maxValues_>("max-values", "");
    info.bind<&Self::defValues_>("def-values", "");
}

CError CAudioParamDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(readFormat(), getFullName());
    readFlags();
    info_->visualName = visualName_;
    info_->name = getName();
    info_->paramRegistry = registry_;
    QEL_TRY(readValues(), getFullName());
    info_->valid = true;
    defaults_.fillWithDefaults(*info_);
    return {};
}

CError CAudioParamDef::readFormat()
{
    info_->esize = elementSize_;
    if (info_->esize < 1) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamDef_init_InvalidElementSize Invalid element size %1 specified.",
                 info_->esize);
    }
    if (dataType_ == "string" || dataType_ == "str" || dataType_ == "1") {
        info_->dtype = CAudioParamInfo::kTypeString;
    }
    if (info_->isString() && info_->esize > 1) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamDef_init_ElementSizeStr Invalid element size %1 for non-float data "
                 "specified.",
                 info_->esize);
    }
    return {};
}

void CAudioParamDef::readFlags()
{
    // What is saved must be reachable by name, so persistent and storable parameters are global; a persistent
    // one is kept out of presets.
    info_->isPersistent = isPersistent_;
    info_->isStorable = !info_->isPersistent && isStorable_;
    info_->isGlobal = info_->isPersistent || info_->isStorable || isGlobal_;
    info_->isDiscrete = isDiscrete_;
    info_->isSingleGroup = isSingleGroup_;
}

CError CAudioParamDef::readValues()
{
    info_->converterNames = converter_.splitWords();
    QEL_TRY(info_->parseConverterNames(), getFullName());
    QEL_TRY(info_->convertMinMaxValues(minValues_, maxValues_), getFullName());
    QEL_TRY(info_->parseDefValues(defValues_), getFullName());
    if (info_->defaults.empty()) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioParamDef_init_NoDefValues No default values specified.");
    }
    return {};
}

} // namespace qel
