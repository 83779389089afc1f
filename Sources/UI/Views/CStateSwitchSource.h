// What a state switch watches.
#pragma once

#include "CError.h"

namespace qel {

class CViewStateSwitch;

// Implemented by objects that know the value of a parameter. A switch joins when the tree is complete and
// leaves before it ends. The source reads from the switch which element and group it wants, and from then on
// calls CViewStateSwitch::setWatchedValue() with the present value, at once and whenever it changes. Window's
// thread.
class CStateSwitchSource
{
public:
    virtual ~CStateSwitchSource() = default;

    virtual CError addSwitch(CViewStateSwitch& stateSwitch) = 0;
    virtual void removeSwitch(CViewStateSwitch& stateSwitch) = 0;
};

} // namespace qel
