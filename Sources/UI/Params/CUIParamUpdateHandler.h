// How a control hears of the parameters that it is bound to.
#pragma once

#include "CError.h"

namespace qel {

class CUIParam;

// Implemented by every object that may have children of the class CUIParam. Which of its children calls, a
// control tells by its address or by its name. Window's thread.
class CUIParamUpdateHandler
{
public:
    virtual ~CUIParamUpdateHandler() = default;

    // A child has bound itself; its first value follows.
    virtual CError onParamAdded(CUIParam& param) = 0;
    // It is going away.
    virtual CError onParamRemoved(CUIParam& param) = 0;
    // A value came back, or the group changed.
    virtual CError onParamUpdate(CUIParam& param) = 0;
    // Range, names or count of elements are others now.
    virtual CError onParamInfo(CUIParam& param) = 0;
};

} // namespace qel
