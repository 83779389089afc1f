// One copy of a compound for each channel group.
#pragma once

#include "CAudioProcess.h"

#include <array>
#include <atomic>

namespace qel {

// Runs a compound definition once for each group that has a channel, with the parameter values of that group.
// Channels go to the element of their group and come out under their own numbers again.
//
// The element of group 0 is built at once, so that a faulty definition shows up where an error can be
// reported, the others by prepareGroups() before their group has a channel. They are kept while the graph
// lives; a group without channels costs nothing. Audio thread from the first step on.
class CAudioProcessStack : public CAudioProcessBase
{
public:
    static constexpr int kMaxGroups = 8;

    explicit CAudioProcessStack(const CAudioProcessDef& def);
    ~CAudioProcessStack() override;

    CError init() override;
    CError bindParams() override;
    void followParams() override;
    void registerKernels() override;
    void resolveKernels() override;
    void prepareGroups(std::uint32_t groups) override;
    void syncLinks() override;
    void disconnectAll() override;
    void reset(double positionSec) override;
    void idle() override;
    std::int64_t steadySamples(double rateHz) const override;
    void skip(std::int64_t samples, double rateHz) override;
    void visit(CGraphVisitor& visitor) const override;

protected:
    void beginStep() override;
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

    CError buildElement(int group, std::unique_ptr<Element>& out);
    Element* element(int group);
    void adopt(std::unique_ptr<Element> element, int group);

    const CAudioProcessDef& compoundDef_;
    std::array<std::unique_ptr<Element>, kMaxGroups> elements_; // by group; null: not in use yet
    std::unique_ptr<CAudioInputPort> drainPort_;                // collects what the elements deliver
    bool isWaiting_ = false; // for the element of a group that has channels

    // On their way from the control threads.
    std::array<std::atomic<Element*>, kMaxGroups> prepared_{};
    std::uint32_t preparedGroups_ = 1; // the control threads' own
};

} // namespace qel
