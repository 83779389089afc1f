// A list of kernel calls that can be run again.
#include "GraphHost/CKernelRecording.h"

namespace qel {

void CKernelRecording::resolve(const CKernelContext& context)
{
    for (CKernelCall& call : calls_) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(call.entry->operandCount); ++i) {
            call.data[i] = context.address(call.operand(i));
        }
    }
}

void CKernelRecording::replay() const
{
    for (const CKernelCall& call : calls_) {
        call.entry->function(call);
    }
}

} // namespace qel
