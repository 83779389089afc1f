// A switch that is on while another is off.
#pragma once

#include "CAudioParamFilter.h"

namespace qel {

// Destination := 1 - source, the opposite state of the switches it is meant for. Works entry by entry in
// every group; where the source falls back to its defaults the destination does too, so the tree gives the
// two opposite defaults. Strings and destinations of another format are left alone.
class CAudioParamFilterInvert : public CAudioParamFilter
{
public:
    void onParamChange(CAudioParam& source, const CAudioParamChange& change,
                       CAudioParamContext& context) override;
    bool onChangeFromAudio(CAudioParam& source, double value, double timeSec) override;
};

} // namespace qel
