// What the parameters of pointer events say.
#pragma once

#include "CView.h"
#include "EventParameters.h"

namespace qel {

// Where the pointer is, from the corner of a view.
inline CPoint pointerIn(const CView& view, const CAttrMap& parameters)
{
    return {eventNumber(parameters, "x") - view.getArea().x, eventNumber(parameters, "y") - view.getArea().y};
}

} // namespace qel
