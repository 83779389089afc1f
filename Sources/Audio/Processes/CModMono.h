// All channels become their mean.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// Puts the mean of all its channels on each of them. The mean is computed once and handed on by reference.
class CModMono : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;
    void syncLinks() override;

protected:
    void step(int count) override;
};

using CModMonoDef = CAudioModuleDef<CModMono>;
extern template class CAudioModuleDef<CModMono>;

} // namespace qel
