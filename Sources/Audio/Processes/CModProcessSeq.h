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
// taken has been worked off. fadeTo() lets the old run work on beside the new one until the crossfade between
// them is over; steps are cut where it ends, and what comes meanwhile is taken up behind it. Members read
// port 0 of the member before them; the first reads all ports of the sequence.
class CModProcessSeq : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;

    CError init() override;
    CError bindParams() override;
    void followParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    std::int64_t steadySamples(double rateHz) const override;
    void skip(std::int64_t samples, double rateHz) override;
    void visit(CGraphVisitor& visitor) const override;

    // The members at work, in order, without those that are faded out.
    std::size_t activeCount() const { return run_.end - run_.first; }
    const CAudioProcessBase& active(std::size_t place) const { return *members_[run_.first + place].process; }

protected:
    // Builds one more member at the end, as the process "<sequence>.<name>". Building thread.
    CError addMember(const CAudioProcessDefBase& def, const CString& name);
    std::size_t memberCount() const { return members_.size(); }
    const CAudioProcessBase& member(std::size_t place) const { return *members_[place].process; }
    // From the next step on the members from `first` to before `end` work.
    void activate(std::size_t first, std::size_t end);
    // The same with a crossfade, if a stream is running. The runs may share no member, and all members must
    // leave rate and latency as they are.
    void fadeTo(std::size_t first, std::size_t end);
    int limitStep(int count) const override;
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

    struct Run
    {
        std::size_t first = 0;
        std::size_t end = 0;

        bool has(std::size_t member) const { return member >= first && member < end; }
        bool isEmpty() const { return first == end; }
        bool operator==(const Run&) const = default;
    };

    bool isAtWork(std::size_t member) const
    {
        return run_.has(member) || (fadeSamplesLeft_ > 0 && leaving_.has(member));
    }
    void start(const Run& run);
    void endFade();
    void addPort();
    void wire();
    void wireMember(std::size_t place);
    CAudioLink& lastLink(const Run& run)
    {
        return run.isEmpty() ? *throughLink_ : *members_[run.end - 1].drainLink;
    }
    void feed(int count);

    std::vector<std::unique_ptr<CAudioOutputPort>> feeds_; // by port
    std::unique_ptr<CAudioInputPort> drain_;
    std::unique_ptr<CAudioLink> throughLink_; // from feed to drain while no member works
    std::vector<Member> members_;
    Run run_;
    Run leaving_; // is faded out
    Run wanted_;  // taken up when the fade is over
    int fadeSamplesLeft_ = 0;
    bool isWired_ = false;
};

} // namespace qel
