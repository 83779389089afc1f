// The tree node that declares a parameter as the opposite of another.
#pragma once

#include "CAudioParamFilterDef.h"

namespace qel {

// Makes CAudioParamFilterInvert objects, which switch the destinations on when the sources are off.
class CAudioParamFilterInvertDef : public CAudioParamFilterDef
{
public:
    CAudioParamFilter* createFilter() const override;
};

} // namespace qel
