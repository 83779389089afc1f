// One copy of a compound for each channel group.
#pragma once

#include "CAudioProcess.h"

#include <array>

namespace qel {

// Runs a compound definition once for each group that has a channel, with the parameter values of that group.
// Channels go to the element of their group and come out under their own numbers again.
//
// An element is built when its group first appears (that of group 0 at once, so that a faulty definition
// shows up where an error can be reported) and is kept while the graph lives; a group without channels costs
// nothing. Audio thread from the first step on.
class CAudioProcessStack : public CAudioProcessBase
{
public:
    static constexpr int kMaxGroups = 8;

    explicit CAudioProcessStack(const CAudioProcessDef& def);
    ~CAudioProcessStack() override;

    CError init() override;
    CError bindParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void syncLinks() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    bool isAtRest() const override;
    void skip(std::int64_t samples, double rateHz) override;
    void visit(CGraphVisitor& visitor) const override;

protected:
    void step(int count) override;
    void beSilent() override;

private:
    // A compound with its own feed and drain.
    struct Element
    {
        std::unique_ptr<CAudioProcess> process;
        std::unique_ptr<CAudioOutputPort> feed;
        std::unique_ptr<CAudioLink> feedLink;
        std::unique_ptr<CAudioLink> drainLink;
        CChannelMask channels = 0;
    };

    CError buildElement(int group);
    Element& element(int group) { return elements_[static_cast<std::size_t>(group)]; }

    const CAudioProcessDef& compoundDef_;
    std::array<Element, kMaxGroups> elements_;
    std::unique_ptr<CAudioInputPort> drainPort_; // collects what the elements deliver
};

} // namespace qel
