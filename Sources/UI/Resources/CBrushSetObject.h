// A brush set of the tree.
#pragma once

#include "CBrushSet.h"
#include "CObject.h"
#include "CSharedDataSet.h"

namespace qel {

// Tag `brushset`. Owns the brushes of the resource named by "file", for all instances in the process; loaded
// when a view first asks for them.
class CBrushSetObject : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // The brushes for an interface scale; share the pointer as long as they are drawn with. On error `out` is
    // null.
    CError getBrushSet(double interfaceScale, std::shared_ptr<const CBrushSet>& out);

private:
    CString file_;
    CSharedDataSet<CBrushSet> set_;
};

} // namespace qel
