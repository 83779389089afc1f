// A tree of processes made from a definition, ready to run.
#include "CAudioProcessTree.h"

#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

CError CAudioProcessTree::build(CAudioGraph& graph, const CAudioProcessDefBase& def, const CString& fullName)
{
    release();
    if (CError error = buildRoot(graph, def, fullName)) {
        release();
        return error;
    }
    return {};
}

CError CAudioProcessTree::buildRoot(CAudioGraph& graph, const CAudioProcessDefBase& def,
                                    const CString& fullName)
{
    params_ = std::make_unique<CAudioProcessParams>();
    QEL_TRY(params_->declare(def, fullName, graph.params), fullName);
    root_ = def.createProcess();
    if (!root_) {
        QEL_FAIL(fullName, "@qelstr_CAudioProcess_init_ProcessDefClassInvalid "
                           "Audio process def of invalid class supplied.");
    }
    root_->place(graph, fullName, CAudioProcessBase::kGroupOfChannel);
    QEL_TRY(root_->init(), fullName);
    QEL_TRY(root_->bindParams(), fullName);
    root_->followParams();
    root_->registerKernels();
    root_->resolveKernels();
    return {};
}

void CAudioProcessTree::release()
{
    if (root_) {
        root_->disconnectAll();
    }
    root_.reset();
    params_.reset();
}

} // namespace qel
