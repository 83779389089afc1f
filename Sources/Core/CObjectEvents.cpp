// Events of the object tree.
#include "CObject.h"

namespace qel {

void CObject::dropEventSubscriptions()
{
    eventSubscriptions_.clear();
}

void CObject::numberObject() {}

} // namespace qel
