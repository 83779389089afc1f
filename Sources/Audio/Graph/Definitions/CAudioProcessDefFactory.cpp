// The run-time class of a compound definition.
#include "CAudioProcess.h"
#include "CAudioProcessOverlap.h"
#include "CAudioProcessStack.h"
#include "Definitions/CAudioProcessDef.h"

namespace qel {

std::unique_ptr<CAudioProcessBase> CAudioProcessDef::createProcess() const
{
    if (isStacked()) {
        return std::make_unique<CAudioProcessStack>(*this);
    }
    if (isOverlapped()) {
        return std::make_unique<CAudioProcessOverlap>(*this);
    }
    return std::make_unique<CAudioProcess>(*this);
}

} // namespace qel
