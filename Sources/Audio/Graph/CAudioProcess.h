// A compound process: children, the links between them, and the order in which they run.
#pragma once

#include "CAudioBypassState.h"
#include "CAudioProcessBase.h"

#include <map>

namespace qel {

class CAudioProcessDef;

// Runs a graph of child processes built from its definition. A step hands what the inputs offer to the
// children, lets each child work off what it has in schedule order, and hands on what reaches the output. "*"
// stands for the compound's own input, as a source, and output, as a destination.
//
// Bypass states add and remove links at run time; the schedule is derived anew before the step in which a
// state has changed. Links that stay keep what they have queued. Links once made are kept for the next time,
// so that switching a state to and fro allocates nothing.
class CAudioProcess : public CAudioProcessBase
{
public:
    explicit CAudioProcess(const CAudioProcessDef& def);
    ~CAudioProcess() override;

    CError init() override;
    CError bindParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void applyEvents() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    void visit(CGraphVisitor& visitor) const override;

    // Adds a child that has been placed. Fails if the name is taken.
    CError addProcess(const CString& name, std::unique_ptr<CAudioProcessBase> process);
    // The child of a name (".name" is the same), or null.
    CAudioProcessBase* findProcess(const CString& name) const;

protected:
    void beginStep() override;
    void step(int count) override;
    void beSilent() override;

private:
    struct Child;

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
        std::unique_ptr<CAudioLink> link = nullptr; // made when it first becomes active
    };
    struct Child
    {
        CString name;
        std::unique_ptr<CAudioProcessBase> process; // null: the compound's own output
        bool isNode = false;
        bool isBypassed = false;
        bool isPlaced = false;
        std::vector<LinkRecord> links; // into this child
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

    CError buildChildren();
    CError buildLinks();
    CError buildStates();
    bool isStateActive(int id) const;

    void schedule();
    void clearActiveCounts();
    void activateAutoLinks();
    void activateExplicitLinks();
    void activate(Child& destination, int destinationPort, Child* source, int sourcePort, int order);
    bool reachesInput(const Child& child) const;
    void prune();
    void reconnect(Child& child);
    void orderChildren();

    CAudioOutputPort& ownSource(int port);
    CAudioInputPort& ownSink(int port);

    const CAudioProcessDef& compoundDef_;
    std::vector<std::unique_ptr<Child>> children_; // in definition order
    std::map<CString, Child*> names_;
    std::vector<ExplicitLink> explicitLinks_;
    std::vector<CAudioBypassState> states_;
    std::vector<Child*> order_;
    Child sink_;
    std::vector<std::unique_ptr<CAudioOutputPort>> ownSources_; // "*" as a source, by port
    std::vector<std::unique_ptr<CAudioInputPort>> ownSinks_;    // "*" as a destination, by port
    bool areLinksDirty_ = true;
};

} // namespace qel
