// A palette of the tree, or the group of all palettes.
#include "CPaletteObject.h"

namespace qel {

void CPaletteObject::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CPaletteObject::file_>("file", "");
}

CError CPaletteObject::getPalette(std::shared_ptr<const CPalette>& out)
{
    out = nullptr;
    if (!file_.isEmpty()) {
        QEL_TRY(palette_.get(file_, 1.0, out), getFullName());
    }
    return {};
}

CPaletteObject* CPaletteObject::findPalette(const CString& name) const
{
    return dynamic_cast<CPaletteObject*>(findChild(name));
}

std::vector<CString> CPaletteObject::getPaletteNames() const
{
    std::vector<CString> names;
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        if (dynamic_cast<CPaletteObject*>(getChild(i))) {
            names.push_back(getChild(i)->getAttrString("name"));
        }
    }
    return names;
}

} // namespace qel
