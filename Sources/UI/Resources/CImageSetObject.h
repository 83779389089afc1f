// An image set of the tree.
#pragma once

#include "CImageSet.h"
#include "CObject.h"
#include "CSharedDataSet.h"

namespace qel {

// Tag `imageset`. Owns the images of the resource named by "file", for all instances in the process. They
// are loaded when a view first asks for them, so that a host that only scans plug-ins does not pay for
// pictures.
class CImageSetObject : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // The images for an interface scale; share the pointer as long as they are drawn. On error `out` is null.
    CError getImageSet(double interfaceScale, std::shared_ptr<const CImageSet>& out);

private:
    CString file_;
    CSharedDataSet<CImageSet> set_;
};

} // namespace qel
