// Tells the user why the program could not start.
#pragma once

#include "CError.h"

namespace qel {

// Shows the error's lines in a window of their own with the plea to pass them on, and blocks the calling
// thread until the user closes it; without a display the lines go to stderr and the call returns at once.
void showFailureWindow(const CError& error);

} // namespace qel
