// Lowers the sample rate by 1, 2, 4 or 8.
#pragma once

#include "CModResampler.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

class CModDownsampler : public CModResampler
{
public:
    explicit CModDownsampler(const CAudioProcessDefBase& definition) : CModResampler(definition, false) {}
};

using CModDownsamplerDef = CAudioModuleDef<CModDownsampler>;
extern template class CAudioModuleDef<CModDownsampler>;

} // namespace qel
