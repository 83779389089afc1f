// The steps of one program.
#pragma once

#include "CAudioParamUndoStep.h"

#include <vector>

namespace qel {

// Steps from the oldest on, of which the first `position` are applied now. A plain value: a program has one,
// and copies are independent. CAudioParamUndo keeps the rules; nothing else changes one.
struct CAudioParamUndoHistory
{
    std::vector<CAudioParamUndoStep> steps;
    std::int32_t position = 0;

    std::int32_t count() const { return static_cast<std::int32_t>(steps.size()); }
};

} // namespace qel
