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

CError CAudioParamFilterDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    sourceNames_ = splitNames(getAttrString("src"));
    if (sourceNames_.empty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamFilterDef_init_NoSrcParams No source parameters defined.");
    }
    destinationNames_ = splitNames(getAttrString("dst"));
    if (destinationNames_.empty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioParamFilterDef_init_NoDstParams No destination parameters defined.");
    }
    return {};
}

} // namespace qel
