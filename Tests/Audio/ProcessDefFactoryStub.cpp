// Stands in for the run-time graph, which the tests of definitions do not need.
#include "CAudioProcessDef.h"

namespace qel {

// Completes the type for the pointer below; no process is ever made.
class CAudioProcessBase
{};

std::unique_ptr<CAudioProcessBase> CAudioProcessDef::createProcess() const
{
    return nullptr;
}

} // namespace qel
