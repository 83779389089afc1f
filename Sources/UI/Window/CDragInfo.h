// A drag in progress.
#pragma once

#include "CError.h"

namespace qel {

// Made when a button goes down on something that can be dragged, and kept until it goes up. Pixels of the
// screen, so that what is dragged may be the very window that the pointer is measured in.
class CDragInfo
{
public:
    CDragInfo(double pointerX, double pointerY) : startX_(pointerX), startY_(pointerY) {}
    virtual ~CDragInfo() = default;

    // The pointer is there now.
    CError dragTo(double pointerX, double pointerY) { return moveBy(pointerX - startX_, pointerY - startY_); }

protected:
    // So far from where it began.
    virtual CError moveBy(double deltaX, double deltaY) = 0;

private:
    double startX_;
    double startY_;
};

} // namespace qel
