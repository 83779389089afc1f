// The tree node that declares a rule which writes parameters from others.
#include "CAudioParamFilterDef.h"

namespace qel {

namespace {

// Blanks around and between names do not count; empty names are left out.
std::vector<CString> splitNames(const CString& list)
{
    std::vector<CString> names;
    for (const CString& part : list.split(u',')) {
        for (const CString& word : part.splitWords()) {
            names.push_back(word);
        }
    }
    return names;
}

} // namespace

void CAudioParamFilterDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioParamFilterDef;
    CObject::buildClassInfo(info);
    info.bind<&Self::src_>("src", "");
    info.bind<&Self::dst_>("dst", "");
}

CError CAudioParamFilterDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    sourceNames_ = splitNames(src_);
    if (sourceNames_.empty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamFilterDef_init_NoSrcParams No source parameters defined.");
    }
    destinationNames_ = splitNames(dst_);
    if (destinationNames_.empty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamFilterDef_init_NoDstParams No destination parameters defined.");
    }
    return {};
}

} // namespace qel
