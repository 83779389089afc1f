// Buttons that controls make for themselves, and what clicks on them tell.
#pragma once

#include "CView.h"

namespace qel {

// From now on the event `onEvent` of the button runs `runEvent` on `target`, with the event's own parameters
// and the number `index` under `key`.
CError addClickCommand(CView& button, const char* onEvent, const char* runEvent, const CObject& target,
                       const char* key, std::int32_t index);

} // namespace qel
