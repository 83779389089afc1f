// Processes in a row, of which a run works.
#pragma once

#include "CAudioProcessBase.h"

#include <memory>
#include <vector>

namespace qel {

// A sequence of child processes: each takes what the one before it makes. All members that there can ever be
// are built at init; the derived class says which run of neighbours works, and may say otherwise before any
// step. So a change of the run cannot fail and allocates nothing. With no member at work the stream passes by
// reference.
//
// Members that rest keep their settings up to date. One that starts to work forgets the signal it had, and a
// run that stays at work across a change keeps it: call activate() only between steps, when all that was
// taken has been worked off. Members read port 0 of the member before them; the first reads all ports of the
// sequence.
class CModProcessSeq : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;

    CError init() override;
    CError bindParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    void visit(CGraphVisitor& visitor) const override;

    // The members at work, in order.
    std::size_t activeCount() const { return end_ - first_; }
    const CAudioProcessBase& active(std::size_t place) const { return *members_[first_ + place].process; }

protected:
    // Builds one more member at the end, as the process "<sequence>.<name>". Building thread.
    CError addMember(const CAudioProcessDefBase& def, const CString& name);
    std::size_t memberCount() const { return members_.size(); }
    const CAudioProcessBase& member(std::size_t place) const { return *members_[place].process; }
    // From the next step on the members from `first` to before `end` work.
    void activate(std::size_t first, std::size_t end);
    void step(int count) override;
    void beSilent() override;

private:
    // A member with every way into it and out of it that there can be.
    struct Member
    {
        std::unique_ptr<CAudioProcessBase> process;
        std::vector<std::unique_ptr<CAudioLink>> feedLinks; // by port
        std::unique_ptr<CAudioLink> chainLink;              // from the member before; null for the first
        std::unique_ptr<CAudioLink> drainLink;
    };

    bool isActive(std::size_t member) const { return member >= first_ && member < end_; }
    void addPort();
    void wire();
    void feed(int count);

    std::vector<std::unique_ptr<CAudioOutputPort>> feeds_; // by port
    std::unique_ptr<CAudioInputPort> drain_;
    std::unique_ptr<CAudioLink> throughLink_; // from feed to drain while no member works
    std::vector<Member> members_;
    std::size_t first_ = 0;
    std::size_t end_ = 0;
    bool isWired_ = false;
};

} // namespace qel
