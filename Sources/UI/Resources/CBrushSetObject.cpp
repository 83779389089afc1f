// A brush set of the tree.
#include "CBrushSetObject.h"

namespace qel {

void CBrushSetObject::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CBrushSetObject::file_>("file", "");
}

CError CBrushSetObject::getBrushSet(double interfaceScale, std::shared_ptr<const CBrushSet>& out)
{
    QEL_TRY(set_.get(file_, interfaceScale, out), getFullName());
    return {};
}

} // namespace qel
