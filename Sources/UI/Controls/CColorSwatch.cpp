// Colours by number.
#include "CColorSwatch.h"

namespace qel {

CError CColorSwatch::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        const CObject& child = *getChild(i);
        if (child.getAttrBool("is-color")) {
            colors_[child.getAttrInt("index")] = child.getAttrString("color");
        }
    }
    return {};
}

CString CColorSwatch::getColor(std::int32_t index) const
{
    const auto found = colors_.find(index);
    return found == colors_.end() ? CString() : found->second;
}

} // namespace qel
