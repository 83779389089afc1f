// Copies one value to several objects.
#pragma once

#include "CObject.h"

namespace qel {

// Tag `core:attr-doubler`. Whatever `value` is set to goes to the attribute named `attr` of every object in
// `target`, a list of paths separated by blanks, in list order and immediately. All targets must exist when
// this object is initialised; one that has gone since is left out.
class CAttrDoubler : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    virtual CError attrValue();
    virtual CError attrTarget();

private:
    CString value_;
    CString attr_;
    CString target_;
    std::vector<CString> targets_;
};

} // namespace qel
