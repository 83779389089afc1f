// The tree node that declares a parameter as the opposite of another.
#include "CAudioParamFilterInvertDef.h"

#include "CAudioParamFilterInvert.h"

namespace qel {

CAudioParamFilter* CAudioParamFilterInvertDef::createFilter() const
{
    return new CAudioParamFilterInvert();
}

} // namespace qel
