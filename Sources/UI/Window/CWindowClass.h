// The window system's classes of our windows.
#pragma once

#include "CError.h"

namespace qel {

// Those of the windows of the interface and of the bridges they lie in. The application takes them back when
// it ends.
class CWindowClass
{
public:
    // Before the first window is made; later calls succeed at once. Any thread.
    static CError registerClasses();
};

} // namespace qel
