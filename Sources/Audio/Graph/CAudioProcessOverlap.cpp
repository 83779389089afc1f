// Two copies of a compound, so that changes of rates and routes can be faded.
#include "CAudioProcessOverlap.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDef.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qel {

namespace {

// Nearly two time constants of the lowest usual DC filter, and longer than the attacks of the envelopes.
constexpr double kSettleSec = 0.1;

} // namespace

CAudioProcessOverlap::CAudioProcessOverlap(const CAudioProcessDef& definition)
    : CAudioProcessBase(definition), compoundDef_(definition)
{}

CAudioProcessOverlap::~CAudioProcessOverlap() = default;

// --- building

CError CAudioProcessOverlap::init()
{
    QEL_TRY(CAudioProcessBase::init(), fullName());
    drain_ = std::make_unique<CAudioInputPort>(graph());
    drain_->makeRoom(copies_.size());
    for (Copy& copy : copies_) {
        QEL_TRY(build(copy), fullName());
    }
    wireDrain();
    planner_ = std::make_unique<CAudioPlanner>(*this, graph());
    return {};
}

CError CAudioProcessOverlap::build(Copy& copy)
{
    copy.graph.reset(new CAudioGraph{graph().kernels, graph().params, graph().visual});
    copy.process = std::make_unique<CAudioProcess>(compoundDef_);
    copy.process->place(*copy.graph, fullName(), group());
    QEL_TRY(copy.process->init(), fullName());
    copy.drainLink = std::make_unique<CAudioLink>(*copy.graph, copy.process->output(0));
    addFeeds(copy);
    return {};
}

void CAudioProcessOverlap::addFeeds(Copy& copy)
{
    const int wanted = std::max(inputCount(), copy.process->inputCount());
    for (int port = static_cast<int>(copy.feeds.size()); port < wanted; ++port) {
        copy.feeds.push_back(std::make_unique<CAudioOutputPort>(*copy.graph));
        copy.feedLinks.push_back(std::make_unique<CAudioLink>(*copy.graph, *copy.feeds.back()));
        copy.feedLinks.back()->connect();
        copy.process->input(port).addLink(*copy.feedLinks.back());
        input(port);
    }
}

CError CAudioProcessOverlap::bindParams()
{
    QEL_TRY(CAudioProcessBase::bindParams(), fullName());
    for (Copy& copy : copies_) {
        QEL_TRY(copy.process->bindParams(), fullName());
    }
    return {};
}

void CAudioProcessOverlap::followParams()
{
    CAudioProcessBase::followParams();
    for (Copy& copy : copies_) {
        copy.process->followParams();
    }
}

void CAudioProcessOverlap::registerKernels()
{
    copies_[0].process->registerKernels();
}

void CAudioProcessOverlap::resolveKernels()
{
    for (Copy& copy : copies_) {
        copy.process->resolveKernels();
    }
}

void CAudioProcessOverlap::prepareGroups(std::uint32_t groups)
{
    for (Copy& copy : copies_) {
        copy.process->prepareGroups(groups);
    }
    preparedGroups_.fetch_or(groups, std::memory_order_release);
}

void CAudioProcessOverlap::disconnectAll()
{
    leavePlan();
    for (Copy& copy : copies_) {
        copy.process->disconnectAll();
    }
    CAudioProcessBase::disconnectAll();
}

// --- audio thread

bool CAudioProcessOverlap::process()
{
    EStep done = EStep::kDone;
    while (done == EStep::kDone) {
        if (planner_->runStep()) {
            return false;
        }
        planner_->beginStep(*current().graph);
        done = processStep();
        planner_->endStep();
    }
    return done == EStep::kSilent;
}

void CAudioProcessOverlap::leavePlan()
{
    if (planner_) {
        planner_->leave();
    }
}

// What its inputs still hold is for the next steps.
std::int64_t CAudioProcessOverlap::steadySamples(double rateHz) const
{
    const bool isAtRest = phase_ == EPhase::kSingle && seenChanges_ == other().graph->layoutsTaken &&
                          !isBeginning() && !hasChanges() && drain_->isAtRest();
    return isAtRest ? current().process->steadySamples(rateHz) : 0;
}

// The whole is asked, with what is inside.
bool CAudioProcessOverlap::takeUpSteadily(std::int64_t aheadSamples, double rateHz)
{
    idleAll(*other().graph);
    limitToRates();
    return seenChanges_ == other().graph->layoutsTaken && !hasChanges() &&
           takeUpAllSteadily(*current().graph, aheadSamples, rateHz);
}

void CAudioProcessOverlap::skip(std::int64_t samples, double rateHz)
{
    CAudioProcessBase::skip(samples, rateHz);
    current().process->skip(samples, rateHz);
}

void CAudioProcessOverlap::reset(double positionSec)
{
    leavePlan();
    CAudioProcessBase::reset(positionSec);
    takeOver();
    current().process->reset(positionSec);
    current().drainLink->clear();
}

void CAudioProcessOverlap::idle()
{
    leavePlan();
    CAudioProcessBase::idle();
    for (Copy& copy : copies_) {
        copy.process->idle();
    }
}

void CAudioProcessOverlap::beSilent()
{
    takeOver();
    CAudioProcessBase::idle();
    step(0);
}

int CAudioProcessOverlap::limitStep(int count) const
{
    const int longest = std::min({count, kLongestOrdinaryStep / rateFactor_, planner_->longestStep()});
    return phase_ == EPhase::kSingle ? longest : std::min(longest, samplesLeft_);
}

// Called before the copy at work receives the changes that the other one has taken up at once.
void CAudioProcessOverlap::startNext()
{
    current().graph->holdsSettings = true;
    other().graph->positionSec = positionSec();
    other().process->reset(positionSec());
    nextLayout_ = other().process->layout();
    enter(EPhase::kSettles);
}

void CAudioProcessOverlap::enter(EPhase phase)
{
    phase_ = phase;
    samplesLeft_ = phase == EPhase::kSettles ? static_cast<int>(std::lround(kSettleSec * sampleRateHz()))
                                             : cutFadeSamples(sampleRateHz());
    wireDrain();
    if (phase == EPhase::kFades) {
        other().graph->holdsSettings = true;
        current().drainLink->startFade(false);
        other().drainLink->startFade(true);
    }
}

// Ends the overlap, wherever it is: from here on the next copy is the one at work.
void CAudioProcessOverlap::takeOver()
{
    if (phase_ == EPhase::kSingle) {
        return;
    }
    current().process->reset(positionSec());
    current_ = 1 - current_;
    phase_ = EPhase::kSingle;
    for (Copy& copy : copies_) {
        copy.graph->holdsSettings = false;
    }
    seenChanges_ = other().graph->layoutsTaken - 1; // look again
    current().drainLink->endFade();
    wireDrain();
}

void CAudioProcessOverlap::wireDrain()
{
    drain_->clearLinks();
    for (std::size_t i = 0; i < copies_.size(); ++i) {
        CAudioLink& link = *copies_[i].drainLink;
        const bool isHeard = i == current_ || phase_ == EPhase::kFades;
        if (isHeard != link.isConnected()) {
            isHeard ? link.connect() : link.disconnect();
        }
        if (isHeard) {
            drain_->addLink(link);
        }
    }
}

void CAudioProcessOverlap::beginStep()
{
    if (phase_ == EPhase::kSingle) {
        lookForLayout();
    }
    limitToRates();
}

void CAudioProcessOverlap::limitToRates()
{
    const std::uint32_t changes = copies_[0].graph->layoutsTaken + copies_[1].graph->layoutsTaken;
    if (std::exchange(ratedChanges_, changes) != changes) {
        rateFactor_ = std::max(copies_[0].process->rateFactor(), copies_[1].process->rateFactor());
    }
}

// Whether another layout is wanted shows in the copy at rest, which takes up all changes at once.
void CAudioProcessOverlap::lookForLayout()
{
    idleAll(*other().graph);
    if (std::exchange(seenChanges_, other().graph->layoutsTaken) == other().graph->layoutsTaken) {
        return;
    }
    if (isBeginning() || other().process->layout() == current().process->layout()) {
        current().graph->holdsSettings = false;
    } else if ((other().process->groupsWanted() & ~preparedGroups_.load(std::memory_order_acquire)) == 0) {
        startNext();
    } else {
        current().graph->holdsSettings = true;
        --seenChanges_; // look again
    }
}

void CAudioProcessOverlap::step(int count)
{
    const std::uint32_t nextChanges = other().graph->layoutsTaken;
    run(current(), count);
    if (phase_ != EPhase::kSingle) {
        run(other(), count);
    }
    planner_->takeOutputs(*current().drainLink);
    drain_->forwardTo(output(0));
    if (phase_ == EPhase::kSettles && other().graph->layoutsTaken != nextChanges) {
        const std::uint32_t layout = other().process->layout();
        if (std::exchange(nextLayout_, layout) != layout) {
            // Anew from the beginning of this step, or it would be heard where steps end.
            enter(EPhase::kSettles);
            samplesLeft_ = std::max(samplesLeft_, count + 1);
        }
    }
    if (phase_ != EPhase::kSingle && (samplesLeft_ -= count) == 0) {
        phase_ == EPhase::kSettles ? enter(EPhase::kFades) : takeOver();
    }
}

void CAudioProcessOverlap::run(Copy& copy, int count)
{
    if (static_cast<int>(copy.feeds.size()) < inputCount()) {
        addFeeds(copy);
    }
    for (std::size_t port = 0; port < copy.feeds.size(); ++port) {
        const CAudioInputPort& from = input(static_cast<int>(port));
        copy.feeds[port]->setChannels(from.channels());
        forEachChannel(from.channels(), [&](int channel) {
            copy.feeds[port]->emit(channel, from.gather(channel, count, def().isWeightedInput()), count,
                                   from.format(channel));
        });
    }
    copy.graph->positionSec = positionSec();
    ++copy.graph->steps;
    copy.process->process();
}

void CAudioProcessOverlap::visit(CGraphVisitor& visitor) const
{
    copies_[current_].process->visit(visitor);
}

} // namespace qel
