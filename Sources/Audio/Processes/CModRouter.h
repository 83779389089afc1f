// Connects the host's channels with the internal ones.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioProcessDefBase.h"

#include <array>

namespace qel {

// Tag audio:modRouter. The attribute `is-output` tells which side the host is on.
class CModRouterDef : public CAudioProcessDefBase
{
public:
    static void buildClassInfo(CClassInfo& info);

    std::unique_ptr<CAudioProcessBase> createProcess() const override;

    bool isOutput() const { return isOutput_; }

private:
    bool isOutput_ = false;
};

// Renumbers channels and gives each its group. Slots, each with an element for every internal channel: 0
// `routing`, the host channel counted from 1, or 0 for none; 1 `grouping`, the group. An input router looks
// up, for each internal channel, the host channel that feeds it; an output router sends each channel of its
// stream to a host channel. A destination with one source passes it by reference, one with several gets their
// mean, one with none is no stream.
class CModRouter : public CAudioProcessBase
{
public:
    explicit CModRouter(const CModRouterDef& def) : CAudioProcessBase(def), isOutput_(def.isOutput()) {}

    void syncLinks() override;
    void applyEvents() override;
    std::uint32_t layout() const override;
    bool hasLayout() const override { return true; }
    std::uint32_t groupsWanted() const override;

protected:
    int slotCount() const override { return 2; }
    void step(int count) override;

private:
    struct Destination
    {
        int sourceCount = 0;
        std::array<std::int8_t, kMaxChannels> sources{}; // in the order in which they are summed
        double scale = 1.0;                              // 1 / sourceCount
        const CAudioStreamFormat* format = nullptr;
    };

    int groupOf(int number) const;
    void clearTable();
    void routeInputs();
    void routeOutputs();
    void addSource(int destination, const Channel& source);
    void finishTable();
    int readGroup() const { return group() == kGroupOfChannel ? 0 : group(); }

    const bool isOutput_;
    std::array<Destination, kMaxChannels> table_; // by destination channel
    CChannelMask single_ = 0;                     // destinations with one source
    CChannelMask summed_ = 0;                     // and with more
};

} // namespace qel
