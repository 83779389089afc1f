// The switch between two settings.
#include "CButtonAB.h"

namespace qel {

CError CButtonAB::initChilds()
{
    QEL_TRY(CButton::initChilds(), getFullName());
    return showActive();
}

CError CButtonAB::onClick(const CAttrMap& parameters)
{
    return isBound() ? CButton::onClick(parameters)
                     : setAttribute("is-active", CAttrValue(!isActive()), true);
}

CError CButtonAB::showActive()
{
    CError first = isActive() ? setState("b-state") : unsetState("b-state");
    collectError(first, setAttribute("title", isActive() ? "[B]B[/B]" : "[B]A[/B]", true));
    return first;
}

} // namespace qel
