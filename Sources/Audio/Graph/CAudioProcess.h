// A compound process: children, the links between them, and the order in which they run.
#pragma once

#include "CAudioBypassState.h"
#include "CAudioProcessBase.h"

#include <algorithm>
#include <functional>

namespace qel {

class CAudioProcessDef;

// Runs a graph of child processes built from its definition. A step hands what the inputs offer to the
// children, lets each child work off what it has in schedule order, and hands on what reaches the output. "*"
// stands for the compound's own input, as a source, and output, as a destination.
//
// Bypass states add and remove links at run time; the schedule is derived anew before the step in which a
// state has changed. Links that stay keep what they have queued. All links that any states can call for are
// made when the compound is built, so that switching a state allocates nothing.
//
// In a running stream nothing is cut: where a child is fed before and after a change, a link that joins is
// faded in and one that leaves is faded out over cutFadeSamples(), and what feeds a leaving link works on
// until the fade is over. Steps are cut where it ends. A state that changes during a fade is taken up behind
// it. Averaged inputs are cut all the same, since their weights change at once.
class CAudioProcess : public CAudioProcessBase
{
public:
    explicit CAudioProcess(const CAudioProcessDef& def);
    ~CAudioProcess() override;

    CError init() override;
    CError bindParams() override;
    void followParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void applyEvents() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    void prepareGroups(std::uint32_t groups) override;
    std::uint32_t layout() const override;
    std::int64_t steadySamples(double rateHz) const override;
    void skip(std::int64_t samples, double rateHz) override;
    std::uint32_t groupsWanted() const override;
    int rateFactor() const override;
    void visit(CGraphVisitor& visitor) const override;

    // Adds a child that has been placed. Fails if the name is taken.
    CError addProcess(const CString& name, std::unique_ptr<CAudioProcessBase> process);
    // The child of a name (".name" is the same), or null.
    CAudioProcessBase* findProcess(const CString& name) const;

protected:
    void beginStep() override;
    void step(int count) override;
    int limitStep(int count) const override;
    void beSilent() override;

private:
    struct Child;

    enum class ERole : std::uint8_t
    {
        kSteady, // in or out, as its active count says
        kJoins,  // is faded in
        kLeaves, // is faded out
        kFeeds,  // no longer active, but feeds one that leaves
    };

    // A possible connection. Explicit ones come from the definition; implicit ones chain children in their
    // order.
    struct LinkRecord
    {
        Child* source; // null: the compound's own input
        int sourcePort;
        int destinationPort;
        int order; // links are summed in this order; implicit links have kImplicit
        int activeCount = 0;
        int previousCount = 0;
        ERole role = ERole::kSteady;
        std::unique_ptr<CAudioLink> link = nullptr;

        bool isActive() const { return activeCount > 0; }
        bool wasActive() const { return previousCount > 0; }
        // Carries samples, be it only until the fade is over.
        bool isLive() const { return isActive() || role == ERole::kLeaves || role == ERole::kFeeds; }
    };
    struct Child
    {
        std::unique_ptr<CAudioProcessBase> process; // null: the compound's own output
        bool isNode = false;
        bool isBypassed = false;
        bool isPlaced = false;
        std::vector<LinkRecord> links; // into this child

        bool isFed() const
        {
            return std::any_of(links.begin(), links.end(), std::mem_fn(&LinkRecord::isActive));
        }
        bool wasFed() const
        {
            return std::any_of(links.begin(), links.end(), std::mem_fn(&LinkRecord::wasActive));
        }
    };
    struct ExplicitLink
    {
        Child* source;
        int sourcePort;
        Child* destination;
        int destinationPort;
        int bypassStateId;
    };
    static constexpr int kImplicit = -1;

    // As findProcess().
    Child* findChild(const CString& name) const;
    CError buildChildren();
    CError readLinks();
    void buildLinks();
    void buildAutoLinksInto(Child& destination, std::size_t place);
    bool isStateActive(int id) const;

    // Calls function(child) for every child and for the compound's own output.
    template <class Function>
    void forEachSink(Function&& function)
    {
        for (const auto& child : children_) {
            function(*child);
        }
        function(sink_);
    }

    void takeUpStates();
    void schedule();
    void clearActiveCounts();
    void activateAutoLinks();
    void activateExplicitLinks();
    LinkRecord& record(Child& destination, int destinationPort, Child* source, int sourcePort, int order);
    void activate(Child& destination, int destinationPort, Child* source, int sourcePort, int order)
    {
        ++record(destination, destinationPort, source, sourcePort, order).activeCount;
    }
    bool reachesInput(const Child& child) const;
    void prune();
    bool assignRoles();
    void keepFeedsOf(Child& child);
    void clearRoles();
    void endFade();
    void wire(Child& child);
    bool orderChildren();
    void dropUnplaced();

    CAudioInputPort& portInto(Child& child, int port)
    {
        return child.process ? child.process->input(port) : ownSink(port);
    }
    CAudioOutputPort& ownSource(int port);
    CAudioInputPort& ownSink(int port);

    const CAudioProcessDef& compoundDef_;
    std::vector<std::unique_ptr<Child>> children_; // in definition order
    std::vector<ExplicitLink> explicitLinks_;
    std::vector<CAudioBypassState> states_;
    std::vector<Child*> order_;
    Child sink_;
    std::vector<std::unique_ptr<CAudioOutputPort>> ownSources_; // "*" as a source, by port
    std::vector<std::unique_ptr<CAudioInputPort>> ownSinks_;    // "*" as a destination, by port
    bool areLinksDirty_ = true;
    int fadeSamplesLeft_ = 0;
};

} // namespace qel
