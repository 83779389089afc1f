// One copy of a compound for each channel group.
#include "CAudioProcessStack.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDef.h"

#include <algorithm>

namespace qel {

CAudioProcessStack::CAudioProcessStack(const CAudioProcessDef& definition)
    : CAudioProcessBase(definition), compoundDef_(definition)
{}

CAudioProcessStack::~CAudioProcessStack()
{
    for (const std::atomic<Element*>& prepared : prepared_) {
        delete prepared.load();
    }
}

// --- building

CError CAudioProcessStack::init()
{
    QEL_TRY(compoundDef_.checkShape(), fullName());
    QEL_TRY(CAudioProcessBase::init(), fullName());
    drainPort_ = std::make_unique<CAudioInputPort>(graph());
    drainPort_->makeRoom(kMaxGroups);
    return buildElement(0, elements_[0]);
}

CError CAudioProcessStack::buildElement(int group, std::unique_ptr<Element>& out)
{
    auto built = std::make_unique<Element>();
    built->process = std::make_unique<CAudioProcess>(compoundDef_);
    built->process->place(graph(), fullName(), group);
    QEL_TRY(built->process->init(), fullName());
    built->feed = std::make_unique<CAudioOutputPort>(graph());
    built->feedLink = std::make_unique<CAudioLink>(graph(), *built->feed);
    built->drainLink = std::make_unique<CAudioLink>(graph(), built->process->output(0));
    out = std::move(built);
    return {};
}

CError CAudioProcessStack::bindParams()
{
    QEL_TRY(CAudioProcessBase::bindParams(), fullName());
    QEL_TRY(elements_[0]->process->bindParams(), fullName());
    return {};
}

void CAudioProcessStack::registerKernels()
{
    elements_[0]->process->registerKernels();
}

void CAudioProcessStack::resolveKernels()
{
    elements_[0]->process->resolveKernels();
}

// Group 0 was built from the same definition without an error.
void CAudioProcessStack::prepareGroups(std::uint32_t groups)
{
    for (int group = 0; group < kMaxGroups; ++group) {
        const std::uint32_t bit = 1U << group;
        std::unique_ptr<Element> built;
        if ((groups & ~preparedGroups_ & bit) == 0 || buildElement(group, built) ||
            built->process->bindParams()) {
            continue;
        }
        built->process->resolveKernels();
        preparedGroups_ |= bit;
        prepared_[static_cast<std::size_t>(group)].store(built.release(), std::memory_order_release);
    }
}

// --- audio thread

void CAudioProcessStack::followParams()
{
    CAudioProcessBase::followParams();
    adopt(std::move(elements_[0]), 0);
}

CAudioProcessStack::Element* CAudioProcessStack::element(int group)
{
    const auto place = static_cast<std::size_t>(group);
    if (!elements_[place]) {
        if (Element* prepared = prepared_[place].exchange(nullptr, std::memory_order_acquire)) {
            adopt(std::unique_ptr<Element>(prepared), group);
        }
    }
    return elements_[place].get();
}

void CAudioProcessStack::adopt(std::unique_ptr<Element> element, int group)
{
    element->feedLink->connect();
    element->process->input(0).addLink(*element->feedLink);
    element->drainLink->connect();
    drainPort_->addLink(*element->drainLink);
    element->process->followParams();
    element->process->reset(positionSec());
    elements_[static_cast<std::size_t>(group)] = std::move(element);
}

// The channels of a group whose element is still to come are missing so long.
void CAudioProcessStack::beginStep()
{
    if (isWaiting_) {
        syncLinks();
    }
}

void CAudioProcessStack::syncLinks()
{
    isWaiting_ = false;
    std::array<CChannelMask, kMaxGroups> masks{};
    for (const Channel& channel : channels()) {
        const auto group = static_cast<std::size_t>(std::clamp(channel.format->group, 0, kMaxGroups - 1));
        masks[group] |= CChannelMask{1} << channel.number;
    }
    for (int group = 0; group < kMaxGroups; ++group) {
        const CChannelMask mask = masks[static_cast<std::size_t>(group)];
        Element* const each = mask != 0 ? element(group) : elements_[static_cast<std::size_t>(group)].get();
        if (each) {
            each->channels = mask;
            each->feed->setChannels(mask);
        }
        isWaiting_ |= mask != 0 && !each;
    }
}

void CAudioProcessStack::step(int count)
{
    for (const auto& each : elements_) {
        if (!each) {
            continue;
        }
        if (each->channels == 0) {
            each->process->idle();
        }
        forEachChannel(each->channels, [&](int channel) {
            const CAudioStreamFormat* format = input(0).format(channel);
            each->feed->emit(channel, input(0).gather(channel, count, def().isWeightedInput()), count,
                             format);
        });
        graph().positionSec = positionSec();
        each->process->process();
    }
    drainPort_->forwardTo(output(0));
}

void CAudioProcessStack::beSilent()
{
    CAudioProcessBase::idle();
    step(0);
}

void CAudioProcessStack::disconnectAll()
{
    for (const auto& each : elements_) {
        if (each) {
            each->process->disconnectAll();
        }
    }
    CAudioProcessBase::disconnectAll();
}

void CAudioProcessStack::reset(double positionSec)
{
    CAudioProcessBase::reset(positionSec);
    for (const auto& each : elements_) {
        if (each) {
            each->process->reset(positionSec);
            each->drainLink->clear();
        }
    }
}

void CAudioProcessStack::idle()
{
    CAudioProcessBase::idle();
    for (const auto& each : elements_) {
        if (each) {
            each->process->idle();
        }
    }
}

std::int64_t CAudioProcessStack::steadySamples(double rateHz) const
{
    const bool isAtRest = !isWaiting_ && drainPort_->isAtRest();
    std::int64_t samples = isAtRest ? CAudioProcessBase::steadySamples(rateHz) : 0;
    for (const auto& each : elements_) {
        if (each && each->channels != 0 && samples > 0) {
            samples = std::min(samples, each->process->steadySamples(rateHz));
        }
    }
    return samples;
}

void CAudioProcessStack::skip(std::int64_t samples, double rateHz)
{
    CAudioProcessBase::skip(samples, rateHz);
    for (const auto& each : elements_) {
        if (each && each->channels != 0) {
            each->process->skip(samples, rateHz);
        }
    }
}

void CAudioProcessStack::visit(CGraphVisitor& visitor) const
{
    visitor.enterCompound(*this);
    for (const auto& each : elements_) {
        if (each && each->channels != 0) {
            each->process->visit(visitor);
        }
    }
    visitor.leaveCompound(*this);
}

} // namespace qel
