// Walks a live graph, for tools that print it.
#pragma once

namespace qel {

class CAudioProcess;
class CAudioProcessBase;

// One link of a compound; a null process stands for the compound's own input or output.
struct CGraphLink
{
    const CAudioProcessBase& compound;
    const CAudioProcessBase* source;
    int sourcePort;
    const CAudioProcessBase* destination;
    int destinationPort;
    int activeCount;
};

// Called by CAudioProcessBase::visit(): children come in schedule order between the calls for their compound,
// the compound's links after them. Audio thread, or while it stands still.
class CGraphVisitor
{
public:
    virtual void enterCompound(const CAudioProcessBase& compound) = 0;
    virtual void leaveCompound(const CAudioProcessBase& compound) = 0;
    virtual void terminal(const CAudioProcessBase& process) = 0;
    virtual void link(const CGraphLink& link) = 0;

protected:
    ~CGraphVisitor() = default;
};

} // namespace qel
