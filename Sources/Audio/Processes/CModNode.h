// A point where streams meet and part.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// Sums what its sources deliver and hands it on by reference; it computes nothing of its own, so with one
// source it costs no kernel.
class CModNode : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;
    void syncLinks() override;

protected:
    void step(int count) override;
};

using CModNodeDef = CAudioModuleDef<CModNode>;
extern template class CAudioModuleDef<CModNode>;

} // namespace qel
