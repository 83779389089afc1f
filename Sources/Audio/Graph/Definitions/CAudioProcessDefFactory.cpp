// The run-time class of a compound definition.
#include "CAudioProcess.h"
#include "CAudioProcessStack.h"
#include "Definitions/CAudioProcessDef.h"

namespace qel {

// A multiband wrapper gives nothing: how its bands are split is not defined, so the compound that holds one
// fails to build and says so.
std::unique_ptr<CAudioProcessBase> CAudioProcessDef::createProcess() const
{
    if (isMultiband()) {
        return nullptr;
    }
    if (isStacked()) {
        return std::make_unique<CAudioProcessStack>(*this);
    }
    return std::make_unique<CAudioProcess>(*this);
}

} // namespace qel
