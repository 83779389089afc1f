// The batch of one operation of a registry.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioParamContext.h"

#include <utility>

namespace qel {

// Gives the context a batch, unless it has one: then that one's owner decides. What is not submitted by the
// end is dropped.
class CAudioParamRegistryBatch
{
public:
    CAudioParamRegistryBatch(CAudioParamCollector& collector, CAudioParamContext& context)
        : collector_(collector), context_(context)
    {
        if (!context.batch) {
            context.batch = &collector.newBatch();
            isOwner_ = true;
        }
    }
    ~CAudioParamRegistryBatch()
    {
        if (isOwner_) {
            collector_.dropBatch(*std::exchange(context_.batch, nullptr));
        }
    }
    CAudioParamRegistryBatch(const CAudioParamRegistryBatch&) = delete;
    CAudioParamRegistryBatch& operator=(const CAudioParamRegistryBatch&) = delete;

    void submit()
    {
        if (std::exchange(isOwner_, false)) {
            collector_.submitBatch(*std::exchange(context_.batch, nullptr));
        }
    }

private:
    CAudioParamCollector& collector_;
    CAudioParamContext& context_;
    bool isOwner_ = false;
};

} // namespace qel
