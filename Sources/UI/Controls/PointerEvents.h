// What the parameters of pointer events say.
#pragma once

#include "CView.h"

namespace qel {

// 0 or false where the event does not have it.
inline double pointerNumber(const CAttrMap& parameters, const CString& name)
{
    const auto found = parameters.find(name);
    return found == parameters.end() ? 0.0 : found->second.toReal().value_or(0.0);
}

inline bool isPointerFlag(const CAttrMap& parameters, const CString& name)
{
    const auto found = parameters.find(name);
    return found != parameters.end() && found->second.toBool().value_or(false);
}

// Where the pointer is, from the corner of a view.
inline CPoint pointerIn(const CView& view, const CAttrMap& parameters)
{
    return {pointerNumber(parameters, "x") - view.getArea().x,
            pointerNumber(parameters, "y") - view.getArea().y};
}

} // namespace qel
