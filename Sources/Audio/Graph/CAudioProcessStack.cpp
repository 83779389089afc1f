// One copy of a compound for each channel group.
#include "CAudioProcessStack.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDef.h"

#include <algorithm>

namespace qel {

CAudioProcessStack::CAudioProcessStack(const CAudioProcessDef& definition)
    : CAudioProcessBase(definition), compoundDef_(definition)
{}

CAudioProcessStack::~CAudioProcessStack() = default;

CError CAudioProcessStack::init()
{
    QEL_TRY(compoundDef_.checkShape(), fullName());
    QEL_TRY(CAudioProcessBase::init(), fullName());
    drainPort_ = std::make_unique<CAudioInputPort>(graph());
    QEL_TRY(buildElement(0), fullName());
    return {};
}

CError CAudioProcessStack::buildElement(int group)
{
    Element& built = element(group);
    built.process = std::make_unique<CAudioProcess>(compoundDef_);
    built.process->place(graph(), fullName(), group);
    QEL_TRY(built.process->init(), fullName());
    built.feed = std::make_unique<CAudioOutputPort>(graph());
    built.feedLink = std::make_unique<CAudioLink>(graph(), *built.feed);
    built.feedLink->connect();
    built.process->input(0).addLink(*built.feedLink);
    built.drainLink = std::make_unique<CAudioLink>(graph(), built.process->output(0));
    built.drainLink->connect();
    drainPort_->addLink(*built.drainLink);
    return {};
}

CError CAudioProcessStack::bindParams()
{
    QEL_TRY(CAudioProcessBase::bindParams(), fullName());
    QEL_TRY(element(0).process->bindParams(), fullName());
    return {};
}

void CAudioProcessStack::registerKernels()
{
    element(0).process->registerKernels();
}

void CAudioProcessStack::resolveKernels()
{
    element(0).process->resolveKernels();
}

// --- audio thread

void CAudioProcessStack::syncLinks()
{
    for (Element& each : elements_) {
        each.channels = 0;
    }
    for (const Channel& channel : channels()) {
        const int group = std::clamp(channel.format->group, 0, kMaxGroups - 1);
        element(group).channels |= CChannelMask{1} << channel.number;
    }
    for (int group = 0; group < kMaxGroups; ++group) {
        Element& each = element(group);
        if (each.channels != 0 && !each.process) {
            // Group 0 was built from the same definition without an error.
            releaseError(buildElement(group));
            releaseError(each.process->bindParams());
            each.process->resolveKernels();
            each.process->reset(positionSec());
        }
        if (each.process) {
            each.feed->setChannels(each.channels);
        }
    }
}

void CAudioProcessStack::step(int count)
{
    for (Element& each : elements_) {
        if (!each.process) {
            continue;
        }
        if (each.channels == 0) {
            each.process->idle();
        }
        forEachChannel(each.channels, [&](int channel) {
            const CAudioStreamFormat* format = input(0).format(channel);
            each.feed->emit(channel, input(0).gather(channel, count, def().isWeightedInput()), count, format);
        });
        graph().positionSec = positionSec();
        each.process->process();
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
    for (Element& each : elements_) {
        if (each.process) {
            each.process->disconnectAll();
        }
    }
    CAudioProcessBase::disconnectAll();
}

void CAudioProcessStack::reset(double positionSec)
{
    CAudioProcessBase::reset(positionSec);
    for (Element& each : elements_) {
        if (each.process) {
            each.process->reset(positionSec);
            each.drainLink->clear();
        }
    }
}

void CAudioProcessStack::idle()
{
    CAudioProcessBase::idle();
    for (Element& each : elements_) {
        if (each.process) {
            each.process->idle();
        }
    }
}

bool CAudioProcessStack::isAtRest() const
{
    const auto rests = [](const Element& each) { return each.channels == 0 || each.process->isAtRest(); };
    return CAudioProcessBase::isAtRest() && drainPort_->isAtRest() &&
           std::all_of(elements_.begin(), elements_.end(), rests);
}

void CAudioProcessStack::skip(std::int64_t samples, double rateHz)
{
    CAudioProcessBase::skip(samples, rateHz);
    for (Element& each : elements_) {
        if (each.channels != 0) {
            each.process->skip(samples, rateHz);
        }
    }
}

void CAudioProcessStack::visit(CGraphVisitor& visitor) const
{
    visitor.enterCompound(*this);
    for (const Element& each : elements_) {
        if (each.process && each.channels != 0) {
            each.process->visit(visitor);
        }
    }
    visitor.leaveCompound(*this);
}

} // namespace qel
