// Platform calls with the words the rest of the system reports them in.
#pragma once

#include "CError.h"

#include <functional>

namespace qel {

class CEventLoop;

namespace CSystem {

// Path of the library or program that this code is linked into; empty if the system does not tell.
CString modulePath();

// Carries the call to the loop's thread; from any thread. On error it will not run.
CError sendEvent(CEventLoop& loop, std::function<void()> call);

} // namespace CSystem
} // namespace qel
