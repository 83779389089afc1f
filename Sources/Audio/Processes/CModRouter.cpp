// Connects the host's channels with the internal ones.
#include "CModRouter.h"

#include "CAudioSum.h"
#include "ParamRounding.h"

#include <algorithm>

namespace qel {

namespace {

enum : int
{
    kRoutingSlot,
    kGroupingSlot
};

constexpr int kMaxGroup = 7;

} // namespace

void CModRouterDef::buildClassInfo(CClassInfo& info)
{
    using Self = CModRouterDef;
    CAudioProcessDefBase::buildClassInfo(info);
    info.bind<&Self::isOutput_>("is-output", false);
}

std::unique_ptr<CAudioProcessBase> CModRouterDef::createProcess() const
{
    return std::make_unique<CModRouter>(*this);
}

// A stream that has ended comes with no step that could build the table anew.
void CModRouter::syncLinks()
{
    if (channels().isEmpty()) {
        clearTable();
        finishTable();
    }
}

void CModRouter::applyEvents()
{
    clearTable();
    if (isOutput_) {
        routeOutputs();
    } else {
        routeInputs();
    }
    finishTable();
}

std::uint32_t CModRouter::layout() const
{
    std::uint32_t sum = 0;
    for (const int slot : {kRoutingSlot, kGroupingSlot}) {
        for (int i = 0; i < kMaxChannels; ++i) {
            sum =
                sum * 31 + static_cast<std::uint32_t>(roundParam(slots().valueOrLast(slot, readGroup(), i)));
        }
    }
    return sum;
}

std::uint32_t CModRouter::groupsWanted() const
{
    std::uint32_t groups = 0;
    const int elements = std::min(slots().elementCount(kRoutingSlot, readGroup()), kMaxChannels);
    for (int i = 0; !isOutput_ && i < elements; ++i) {
        if (roundParam(slots().value(kRoutingSlot, readGroup(), i)) > 0) {
            groups |= 1U << groupOf(i);
        }
    }
    return groups;
}

int CModRouter::groupOf(int number) const
{
    return std::clamp(roundParam(slots().valueOrLast(kGroupingSlot, readGroup(), number)), 0, kMaxGroup);
}

void CModRouter::clearTable()
{
    for (Destination& destination : table_) {
        destination.sourceCount = 0;
    }
    single_ = summed_ = 0;
}

void CModRouter::routeInputs()
{
    const int elements = std::min(slots().elementCount(kRoutingSlot, readGroup()), kMaxChannels);
    for (int i = 0; i < elements; ++i) {
        const int host = roundParam(slots().value(kRoutingSlot, readGroup(), i)) - 1;
        const auto source = std::find_if(channels().begin(), channels().end(),
                                         [host](const Channel& channel) { return channel.number == host; });
        if (source != channels().end()) {
            addSource(i, *source);
        }
    }
}

void CModRouter::routeOutputs()
{
    for (const Channel& channel : channels()) {
        const int host = roundParam(slots().value(kRoutingSlot, readGroup(), channel.number)) - 1;
        if (host >= 0 && host < kMaxChannels) {
            addSource(host, channel);
        }
    }
}

void CModRouter::addSource(int number, const Channel& source)
{
    Destination& destination = table_[static_cast<std::size_t>(number)];
    if (destination.sourceCount == 0) {
        CAudioStreamFormat format = *source.format;
        format.group = groupOf(number);
        destination.format = graph().formats.intern(format);
    }
    destination.sources[static_cast<std::size_t>(destination.sourceCount++)] =
        static_cast<std::int8_t>(source.number);
}

void CModRouter::finishTable()
{
    for (int number = 0; number < kMaxChannels; ++number) {
        Destination& destination = table_[static_cast<std::size_t>(number)];
        if (destination.sourceCount > 0) {
            destination.scale = 1.0 / destination.sourceCount;
            (destination.sourceCount == 1 ? single_ : summed_) |= CChannelMask{1} << number;
        }
    }
    output(0).setChannels(single_ | summed_);
}

void CModRouter::step(int count)
{
    const bool isWeighted = def().isWeightedInput();
    forEachChannel(single_, [&](int number) {
        const Destination& destination = table_[static_cast<std::size_t>(number)];
        output(0).emit(number, input(0).gather(destination.sources[0], count, isWeighted), count,
                       destination.format);
    });
    forEachChannel(summed_, [&](int number) {
        const Destination& destination = table_[static_cast<std::size_t>(number)];
        CAudioSum sum(graph().kernels, count);
        for (int i = 0; i < destination.sourceCount; ++i) {
            sum.add(input(0).gather(destination.sources[static_cast<std::size_t>(i)], count, isWeighted));
        }
        output(0).emit(number, sum.takeScaled(destination.scale), count, destination.format);
    });
}

} // namespace qel
