// Root of all run-time processes of the signal graph.
#include "CAudioProcessBase.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDefBase.h"
#include "Trace.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {

namespace {

// By so much may two times that mean the same moment differ.
constexpr double kRoundingSamples = 1e-6;

} // namespace

void CAudioProcessBase::place(CAudioGraph& graph, const CString& fullName, int group)
{
    graph_ = &graph;
    fullName_ = fullName;
    group_ = group;
}

CError CAudioProcessBase::init()
{
    input(0);
    output(0);
    return {};
}

CError CAudioProcessBase::bindParams()
{
    const int boundGroup = def_.isGroup0() ? 0 : group_;
    QEL_TRY(slots_.bind(def_, fullName_, graph_->params, boundGroup, *this, graph_->holdsSettings),
            fullName_);
    if (isTracing()) {
        traceUnknownSlots();
    }
    return {};
}

// They bind to nothing that the process reads.
void CAudioProcessBase::traceUnknownSlots() const
{
    for (const CAudioProcessDefBase::Slot& slot : def_.slots()) {
        if (slot.number >= slotCount()) {
            trace("regModuleParam error " + CString::number(slot.number) + " " + slot.paramName, fullName_);
        }
    }
}

void CAudioProcessBase::followParams()
{
    hangOn(graph_->changed);
    slots_.follow();
}

CAudioInputPort& CAudioProcessBase::addInput(std::size_t port)
{
    while (inputs_.size() <= port) {
        inputs_.push(std::make_unique<CAudioInputPort>(*graph_));
    }
    return *inputs_[port];
}

CAudioOutputPort& CAudioProcessBase::addOutput(std::size_t port)
{
    while (outputs_.size() <= port) {
        outputs_.push(std::make_unique<CAudioOutputPort>(*graph_));
    }
    return *outputs_[port];
}

double CAudioProcessBase::positionBehind(std::int64_t samples, double rateHz) const
{
    const std::int64_t ahead = samples != 0 ? samplesHere(samples, rateHz) : 0;
    return basePositionSec_ + static_cast<double>(positionSamples_ + ahead) / format_.sampleRateHz;
}

void CAudioProcessBase::reset(double positionSec)
{
    basePositionSec_ = positionSec;
    positionSamples_ = 0;
    isBeginning_ = true;
    for (const auto& port : inputs_) {
        for (CAudioLink* link : port->links()) {
            link->clear();
        }
    }
}

void CAudioProcessBase::disconnectAll()
{
    for (const auto& port : inputs_) {
        for (CAudioLink* link : port->links()) {
            if (link->isConnected()) {
                link->disconnect();
            }
        }
        port->clearLinks();
    }
    for (const auto& port : outputs_) {
        port->disconnectAll();
    }
}

std::int64_t CAudioProcessBase::steadySamples(double) const
{
    return isSettled() && !hasChanges() ? kForever : 0;
}

bool CAudioProcessBase::isSettled() const
{
    return !isBeginning_ &&
           std::all_of(inputs_.begin(), inputs_.end(), [](const auto& port) { return port->isAtRest(); });
}

bool CAudioProcessBase::takeUpSteadily(std::int64_t, double)
{
    return !hasChanges();
}

// While a graph is steady, all that works has taken part in its last step.
bool CAudioProcessBase::takeUpAllSteadily(CAudioGraph& graph, std::int64_t aheadSamples, double rateHz)
{
    bool isSteady = true;
    forEachRaised(graph.changed, [&](CAudioParamMark& mark) {
        auto& process = static_cast<CAudioProcessBase&>(mark);
        if (process.lastStep_ != graph.steps) {
            process.idle();
        } else {
            isSteady = isSteady && process.takeUpSteadily(aheadSamples, rateHz);
        }
    });
    return isSteady;
}

void CAudioProcessBase::idleAll(CAudioGraph& graph)
{
    forEachRaised(graph.changed, [](CAudioParamMark& mark) { static_cast<CAudioProcessBase&>(mark).idle(); });
}

// Rates differ by powers of two, so the product is exact.
std::int64_t CAudioProcessBase::samplesHere(std::int64_t samples, double rateHz) const
{
    return static_cast<std::int64_t>(static_cast<double>(samples) * (format_.sampleRateHz / rateHz));
}

void CAudioProcessBase::skip(std::int64_t samples, double rateHz)
{
    positionSamples_ += samplesHere(samples, rateHz);
    if (hasEvents() && isUnheard(0)) {
        takePassedEvents();
    }
}

// They may not wait for the next step, before which others could come to be held.
void CAudioProcessBase::takePassedEvents()
{
    if (!graph_->holdsSettings) {
        const double limitSec = positionSec() - timeShiftSec() - kRoundingSamples / format_.sampleRateHz;
        mustApplyEvents_ = takeChangesUntil(limitSec) || mustApplyEvents_;
    }
    graph_->changesWait |= hasEvents();
}

void CAudioProcessBase::visit(CGraphVisitor& visitor) const
{
    visitor.terminal(*this);
}

bool CAudioProcessBase::process()
{
    EStep done = EStep::kDone;
    while (done == EStep::kDone) {
        done = processStep();
    }
    return done == EStep::kSilent;
}

CAudioProcessBase::EStep CAudioProcessBase::processStep()
{
    beginStep();
    const int offered = available();
    if (offered == 0) {
        return EStep::kDry;
    }
    if (isBeginning_ && offered != CAudioInputPort::kNoStream) {
        basePositionSec_ = graph_->positionSec;
        positionSamples_ = 0;
    }
    if (takeUpFormats()) {
        syncLinks();
        mustApplyEvents_ = true;
    }
    if (offered == CAudioInputPort::kNoStream) {
        isBeginning_ = true;
        beSilent();
        return EStep::kSilent;
    }
    if (applyDueEvents(positionSec()) || mustApplyEvents_) {
        mustApplyEvents_ = false;
        applyEvents();
    }
    const int longest = limitStep(offered);
    const bool isCut = hasEvents() && !isUnheard(longest);
    const int count = isCut ? limitToNextEvent(longest) : longest;
    step(count);
    isBeginning_ = false;
    lastStep_ = graph_->steps;
    positionSamples_ += count;
    if (!isCut && hasEvents()) {
        takePassedEvents();
    }
    bool isDry = false;
    for (const auto& port : inputs_) {
        isDry |= port->consume(count);
    }
    return isDry ? EStep::kDry : EStep::kDone;
}

void CAudioProcessBase::idle()
{
    if (hasEvents() && takeChangesUntil(std::numeric_limits<double>::infinity())) {
        mustApplyEvents_ = true;
    }
}

bool CAudioProcessBase::takeChangesUntil(double limitSec)
{
    if (hasLayout()) {
        ++graph_->layoutsTaken;
    }
    return slots_.applyUntil(limitSec);
}

int CAudioProcessBase::available() const
{
    int count = CAudioInputPort::kNoStream;
    for (const auto& port : inputs_) {
        count = std::min(count, port->available());
    }
    return count;
}

// Port 0 tells what the process works on: its channels with their groups, and the rate.
bool CAudioProcessBase::takeUpFormats()
{
    const CAudioInputPort& port = *inputs_[0];
    const CChannelMask mask = port.channels();
    bool isSame = mask == channelMask_;
    for (const Channel& channel : channels_) {
        isSame = isSame && port.format(channel.number) == channel.format;
    }
    if (isSame) {
        return false;
    }
    channelMask_ = mask;
    channels_.clear();
    forEachChannel(mask, [&](int channel) { channels_.push({channel, port.format(channel)}); });
    if (!channels_.isEmpty() && !(*channels_[0].format == format_)) {
        basePositionSec_ = positionSec();
        positionSamples_ = 0;
        format_ = *channels_[0].format;
    }
    return true;
}

// A change dated t reaches this process when the stream is there: the stream is late by the latency in front
// of it. One sample of tolerance covers the rounding of times, and the comparison is strict. Where a stream
// begins there is no older signal that a change could come too early for: all that is due at its position
// holds from its first sample.
bool CAudioProcessBase::applyDueEvents(double atSec)
{
    if (!hasEvents() || graph_->holdsSettings) {
        return false;
    }
    const double shiftSec = isBeginning_ ? 0.0 : timeShiftSec();
    return takeChangesUntil(atSec + 1.0 / format_.sampleRateHz - shiftSec);
}

// Behind a latency a change falls due within a step, wherever the host's blocks end.
int CAudioProcessBase::limitToNextEvent(int count) const
{
    if (graph_->holdsSettings) {
        return count;
    }
    const double samples = (slots_.nextEventSec() + timeShiftSec() - positionSec()) * format_.sampleRateHz;
    const double whole = std::floor(samples + kRoundingSamples);
    return whole >= 1.0 && whole < count ? static_cast<int>(whole) : count;
}

double CAudioProcessBase::timeShiftSec() const
{
    return def_.usesTimeShift() ? format_.latencySec() : 0.0;
}

} // namespace qel
