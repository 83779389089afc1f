// Definition of a process that needs nothing beyond the common attributes.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

// Makes processes of one class from the attributes that every definition has. The process's header declares
// its instance `extern` and its source file defines it, so that the process, a template itself as a rule, is
// compiled there alone and not again with the table of tags.
template <class Process>
class CAudioModuleDef : public CAudioProcessDefBase
{
public:
    std::unique_ptr<CAudioProcessBase> createProcess() const override;
};

template <class Process>
std::unique_ptr<CAudioProcessBase> CAudioModuleDef<Process>::createProcess() const
{
    return std::make_unique<Process>(*this);
}

} // namespace qel
