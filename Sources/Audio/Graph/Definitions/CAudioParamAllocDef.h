// The tree node that ties a parameter name to a slot of a module.
#pragma once

#include "CObject.h"

namespace qel {

// A module's code asks for its parameters by slot number; this node, a child of the module's definition, says
// which name a slot has there. A missing name or slot number fails init(). Read-only afterwards.
class CAudioParamAllocDef : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    const CString& getParamName() const { return paramName_; }
    std::int32_t getIndex() const { return index_; }

private:
    CString paramName_;
    std::int32_t index_ = -1;
};

} // namespace qel
