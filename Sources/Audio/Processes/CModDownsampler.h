// Lowers the sample rate by 1, 2, 4 or 8.
#pragma once

#include "CAudioModuleDef.h"
#include "Processes/CModResampler.h"

namespace qel {

class CModDownsampler : public CModResampler
{
public:
    explicit CModDownsampler(const CAudioProcessDefBase& definition) : CModResampler(definition, false) {}
};

using CModDownsamplerDef = CAudioModuleDef<CModDownsampler>;

} // namespace qel
