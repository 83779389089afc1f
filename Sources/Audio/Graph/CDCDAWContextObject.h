// The kernel context as an object of the instance's tree.
#pragma once

#include "CObject.h"

#include <memory>

namespace qel {

class CKernelContext;

// Tag audio:dcdaw-context; the object plugin.dcdaw-context of each plug-in instance. Owns the kernel context,
// which it makes at init and frees when it ends, so it must outlive the processes of the instance. The thread
// that builds the tree takes the context from here once; the audio thread uses it from then on.
class CDCDAWContextObject : public CObject
{
public:
    CDCDAWContextObject();
    ~CDCDAWContextObject() override;

    CError init() override;

    // Null before init.
    CKernelContext* context() const { return context_.get(); }

private:
    std::unique_ptr<CKernelContext> context_;
};

} // namespace qel
