// How the objects of an instance reach the host they run in.
#pragma once

#include "CCheckedObject.h"

#include <cstdint>

namespace qel {

// Implemented by the wrapper of one host interface, which outlives the instance's objects or takes itself out
// of them first (CAudioExtParamList::setHostBridge()). Calls come in whatever thread changed a parameter,
// several at once, with no lock of the instance held, and may come back as a new value at once: hosts do
// that.
class CAudioExtParamHostBridge : public CCheckedObject
{
public:
    // A parameter of the host's list has moved without the host's doing. `norm` is 0 to 1.
    virtual void setParameterAutomated(std::int32_t index, double norm) = 0;
    // Names, programs or values have changed as a whole.
    virtual void updateDisplay() {}
    // The user takes hold of a control, and lets it go.
    virtual void beginEdit(std::int32_t index) { (void)index; }
    virtual void endEdit(std::int32_t index) { (void)index; }
    // Takes over the host's names of the input channels.
    virtual void importChannelLabels() {}
};

} // namespace qel
