// What a tree of process definitions declares.
#pragma once

#include "CString.h"

#include <vector>

namespace qel {

class CAudioParamDef;
class CAudioParamFilterDef;
class CAudioParamRemapDef;
class CObject;

// The remaps, global parameters and filters below a root definition, each in the order of the tree: what an
// instance has to make, without a walk over all that makes nothing. Names are relative to the process that
// the root becomes, and begin with a dot unless they are empty. Belongs to the root definition and points to
// what stands below it.
struct CAudioDeclarations
{
    template <class Definition>
    struct Place
    {
        CString name;
        const Definition* definition;
    };

    std::vector<Place<CAudioParamRemapDef>> remaps; // by the process that they stand in
    std::vector<Place<CAudioParamDef>> globals;
    std::vector<Place<CAudioParamFilterDef>> filters; // by the process that they stand in

    void collect(const CObject& node, const CString& name = {});
};

} // namespace qel
