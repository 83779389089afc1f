// What "shared-attribute" of a control leads to.
#include "SharedTarget.h"

#include "CSharedAttribute.h"

namespace qel {

SharedTarget findSharedTarget(CObject& from, const CString& path, const CString& attribute)
{
    CObject* const object = path.isEmpty() ? nullptr : from.findObject(path);
    if (!dynamic_cast<CSharedAttribute*>(object)) {
        return {object, attribute};
    }
    return {object->getParent(), attribute.isEmpty() ? object->getAttrString("attribute") : attribute};
}

} // namespace qel
