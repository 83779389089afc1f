// Raises the sample rate by 1, 2, 4 or 8.
#pragma once

#include "CModResampler.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

class CModUpsampler : public CModResampler
{
public:
    explicit CModUpsampler(const CAudioProcessDefBase& definition) : CModResampler(definition, true) {}
};

using CModUpsamplerDef = CAudioModuleDef<CModUpsampler>;
extern template class CAudioModuleDef<CModUpsampler>;

} // namespace qel
