// The tree node that redirects a parameter slot to another parameter.
#pragma once

#include "CObject.h"

namespace qel {

// A child of a process definition. `orig` names a slot parameter seen from that process, also one of a child
// ("modSat.drive"); `new` the parameter that takes its place, where each leading "^" climbs one level and a
// leading "/" starts at the root. Both are kept as written; whoever instantiates the process resolves them.
// A missing name fails init(). Read-only afterwards.
class CAudioParamRemapDef : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    const CString& getOrigName() const { return origName_; }
    const CString& getNewName() const { return newName_; }

private:
    CString origName_;
    CString newName_;
};

} // namespace qel
