// Definition of a process that needs nothing beyond the common attributes.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

// Makes processes of one class from the attributes that every definition has.
template <class Process>
class CAudioModuleDef : public CAudioProcessDefBase
{
public:
    std::unique_ptr<CAudioProcessBase> createProcess() const override
    {
        return std::make_unique<Process>(*this);
    }
};

} // namespace qel
