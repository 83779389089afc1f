// An image set of the tree.
#include "CImageSetObject.h"

namespace qel {

void CImageSetObject::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CImageSetObject::file_>("file", "");
}

CError CImageSetObject::getImageSet(double interfaceScale, std::shared_ptr<const CImageSet>& out)
{
    QEL_TRY(set_.get(file_, interfaceScale, out), getFullName());
    return {};
}

} // namespace qel
