// The children that controls with one parameter make themselves.
#pragma once

#include "CView.h"

namespace qel {

class CUIParamController;

// A control says itself what it is bound to; what it says goes to a child "ui-param" of the tag
// `ui:ui-param`, which follows later changes of the last four:
//
//     bridge, shared-attribute, group-selector   paths, from the control
//     is-replacing
//     group, element, element-offset, element-count
//
// Nothing is made where the tree has given the control a ui-param already, or where neither a bridge nor a
// shared attribute is named.
CError makeParam(CView& control);

// The control's controller, in `out`: that of the tree, or else a new one.
CError makeController(CView& control, CUIParamController*& out);

} // namespace qel
