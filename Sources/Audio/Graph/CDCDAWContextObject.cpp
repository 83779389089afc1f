// The kernel context as an object of the instance's tree.
#include "CDCDAWContextObject.h"

#include "CKernelContext.h"

namespace qel {

CDCDAWContextObject::CDCDAWContextObject() = default;
CDCDAWContextObject::~CDCDAWContextObject() = default;

CError CDCDAWContextObject::init()
{
    QEL_TRY(CObject::init(), getFullName());
    context_ = std::make_unique<CKernelContext>();
    return {};
}

} // namespace qel
