// The tree node that declares a parameter.
#pragma once

#include "CAudioParamInfo.h"
#include "CObject.h"

namespace qel {

// Turns its attributes into a CAudioParamInfo when it is initialised; the converters it names must stand in
// the shared tree before it. A fault in the declaration fails init() with a message that says which. Read
// from any thread afterwards.
class CAudioParamDef : public CObject
{
public:
    CError init() override;

    const CAudioParamInfo& getInfo() const { return info_; }

private:
    CError readFormat();
    void readFlags();
    CError readValues();

    CAudioParamInfo info_;
};

} // namespace qel
