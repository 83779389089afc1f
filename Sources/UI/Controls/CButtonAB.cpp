// The switch between two settings.
#include "CButtonAB.h"

#include "CFirstError.h"

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
    CFirstError first;
    first.add(isActive() ? setState("b-state") : unsetState("b-state"));
    first.add(setAttribute("title", isActive() ? "[B]B[/B]" : "[B]A[/B]", true));
    return first.take();
}

} // namespace qel
