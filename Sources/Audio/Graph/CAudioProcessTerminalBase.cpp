// What all processes with module instances have in common.
#include "CAudioProcessTerminalBase.h"

#include "Definitions/CAudioProcessDefBase.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr double kMinFadeSec = 0.0001;

} // namespace

CAudioProcessTerminalBase::CAudioProcessTerminalBase(const CAudioProcessDefBase& definition)
    : CAudioProcessBase(definition)
{}

CError CAudioProcessTerminalBase::init()
{
    QEL_TRY(CAudioProcessBase::init(), fullName());
    places_ = CAudioVector<CAudioModulePlace>(CAudioAllocator<CAudioModulePlace>(memory()));
    isSmooth_ = def().isSmoothUpdate();
    fadeSec_ = std::max(def().xfadeLengthSec(), kMinFadeSec);
    return {};
}

int CAudioProcessTerminalBase::fadeSamples() const
{
    return std::max(1, static_cast<int>(std::round(fadeSec_ * sampleRateHz())));
}

CAudioModulePlace& CAudioProcessTerminalBase::placeFor(const Channel& channel, std::size_t& used)
{
    const int channelGroup = group() == kGroupOfChannel ? channel.format->group : group();
    if (def().isTerminalWhole() || def().isGrouped()) {
        for (std::size_t i = 0; i < used; ++i) {
            if (def().isTerminalWhole() || places_[i].group == channelGroup) {
                return places_[i];
            }
        }
    }
    if (used == places_.size()) {
        places_.emplace_back();
    }
    CAudioModulePlace& place = places_[used++];
    place.channels.clear();
    place.outputFormats.clear();
    place.group = def().isGroup0() ? 0 : channelGroup;
    place.sampleRateHz = channel.format->sampleRateHz;
    return place;
}

void CAudioProcessTerminalBase::syncLinks()
{
    CInlineArray<CAudioModulePlace, kMaxChannels> before;
    for (const CAudioModulePlace& place : places_) {
        before.push(place);
    }
    std::size_t used = 0;
    CChannelMask mask = 0;
    for (const Channel& channel : channels()) {
        CAudioModulePlace& place = placeFor(channel, used);
        place.channels.push(channel.number);
        place.outputFormats.push(graph().formats.intern(outputFormat(*channel.format)));
        mask |= CChannelMask{1} << channel.number;
    }
    places_.resize(used);
    movedPlaces_ = 0;
    for (std::size_t i = 0; i < used; ++i) {
        const bool isSame = i < before.size() && before[i].isSameFor(places_[i]);
        movedPlaces_ |= static_cast<std::uint32_t>(!isSame) << i;
    }
    output(0).setChannels(mask);
}

void CAudioProcessTerminalBase::gatherInputs(CAudioModuleStep& step, CAudioOwnedInputs& owned,
                                             const CAudioModulePlace& place, int portCount)
{
    const bool isWeighted = def().isWeightedInput();
    for (int port = 0; port < portCount; ++port) {
        const CAudioInputPort& from = input(port);
        for (const int channel : place.channels) {
            CBufferRef sum;
            CBufferRef samples = from.borrow(channel, step.count, isWeighted, sum);
            if (samples.isNone()) {
                sum = samples = step.allocate();
                step.submit(EKernel::kFill0, 0.0, {samples});
            }
            if (!sum.isNone()) {
                owned.add(sum);
            }
            step.inputs.push(samples);
        }
    }
}

void CAudioProcessTerminalBase::emitOutputs(CAudioModuleStep& step, const CAudioModulePlace& place)
{
    CAudioOutputPort& to = output(0);
    const int count = outputCount(step.count);
    for (std::size_t i = 0; i < place.channels.size(); ++i) {
        to.emit(place.channels[i], step.outputs[i], count, place.outputFormats[i]);
    }
}

} // namespace qel
