// Decides when the steps of a graph are run from a plan, and when a plan is made.
#include "CAudioPlanner.h"

#include "CAudioParamCollector.h"
#include "CAudioPlanBuilder.h"

#include <algorithm>
#include <utility>

namespace qel {

CAudioPlanner::CAudioPlanner(CAudioProcessBase& root, CAudioGraph& graph)
    : root_(root), graph_(graph), plan_(graph.kernels)
{
    CAudioPlanBuilder::warmUp();
}

// --- running

bool CAudioPlanner::runStep()
{
    if (!plan_.isReady()) {
        return false;
    }
    const int count = offered();
    const bool canRun = count > 0 && isSameInput() && takeUpChanges();
    const int piece = canRun ? static_cast<int>(std::min<std::int64_t>(count, steadySamples())) : 0;
    const bool hasRun = piece > 0 && runFromPlan(piece);
    if (hasRun && piece == count && steady_ > 0) {
        return true;
    }
    leave();
    lookAhead();
    return hasRun && piece == count;
}

// A change that waits may fall due before a fade ends, and would cut the step in which it does.
std::int64_t CAudioPlanner::steadySamples() const
{
    return inner_->changesWait ? steady_ - 1 : steady_;
}

int CAudioPlanner::offered() const
{
    int count = 0;
    for (int port = 0; port < root_.inputCount(); ++port) {
        const CAudioInputPort& from = root_.input(port);
        if (from.links().size() != 1) {
            return 0;
        }
        const CAudioLink& link = *from.links()[0];
        bool isWhole = true;
        forEachChannel(link.channels(), [&](int channel) {
            const CAudioChunk* chunk = link.onlyChunk(channel);
            isWhole = isWhole && chunk && (count == 0 || chunk->count == count);
            count = isWhole ? chunk->count : 0;
        });
        if (!isWhole) {
            return 0;
        }
    }
    return count;
}

bool CAudioPlanner::isSameInput() const
{
    if (!mayPlan()) {
        return false;
    }
    std::size_t known = 0;
    for (int port = 0; port < root_.inputCount(); ++port) {
        const CAudioLink& link = *root_.input(port).links()[0];
        bool isSame = true;
        forEachChannel(link.channels(), [&](int number) {
            isSame = isSame && known < inputs_.size() && inputs_[known].port == port &&
                     inputs_[known].number == number && inputs_[known].format == link.head(number)->format;
            ++known;
        });
        if (!isSame) {
            return false;
        }
    }
    return known == inputs_.size();
}

bool CAudioPlanner::haveChangesCome()
{
    const std::uint64_t arrivals = graph_.params.arrivals();
    return std::exchange(arrivals_, arrivals) != arrivals;
}

// A module that changes in place has to find its state as it would be, and what it makes of it may no longer
// be what its twin has.
bool CAudioPlanner::takeUpChanges()
{
    if (!haveChangesCome()) {
        return true;
    }
    inner_->plan = &plan_;
    const bool isSteady = root_.takeUpSteadily(planned_, root_.sampleRateHz());
    inner_->plan = nullptr;
    return isSteady && plan_.reuniteTwins();
}

bool CAudioPlanner::runFromPlan(int count)
{
    CInlineArray<CBufferRef, 64> signals;
    bool hasAll = true;
    for (const Channel& channel : inputs_) {
        signals.push(root_.input(channel.port).links()[0]->head(channel.number)->buffer);
        hasAll = hasAll && !signals.last().isNone();
    }
    while (signals.size() < plan_.signalCount()) {
        const int length = count * plan_.signalRatio(signals.size());
        const CBufferRef made = graph_.kernels.allocateSamples(static_cast<std::size_t>(length));
        hasAll = hasAll && !made.isNone();
        signals.push(made);
    }
    if (hasAll) {
        plan_.run(count, {signals.data(), signals.size()});
        handOn(count, {signals.data(), signals.size()});
        planned_ += count;
        steady_ -= count;
        ++stepsPlanned_;
        ++graph_.plannedSteps;
        if (std::exchange(inner_->changesWait, false)) {
            tellProcesses();
        }
    }
    for (std::size_t i = inputs_.size(); i < signals.size(); ++i) {
        if (!signals[i].isNone()) {
            graph_.kernels.release(signals[i]);
        }
    }
    return hasAll;
}

void CAudioPlanner::handOn(int count, std::span<const CBufferRef> signals)
{
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        const CBufferRef buffer = signals[plan_.outputs()[i]];
        graph_.kernels.addRef(buffer);
        root_.output(0).emit(outputs_[i].number, buffer, count, outputs_[i].format);
    }
    for (int port = 0; port < root_.inputCount(); ++port) {
        root_.input(port).consume(count);
    }
}

void CAudioPlanner::leave()
{
    isRipe_ = false;
    quietSamples_ = 0;
    if (stepsPlanned_ > 0) {
        const bool hasLasted = std::exchange(stepsPlanned_, 0) >= kStepsWanted;
        if (hasLasted) {
            quietWanted_ = 0;
        } else {
            waitLonger();
        }
    }
    if (plan_.isReady()) {
        plan_.release();
    }
    tellProcesses();
}

void CAudioPlanner::tellProcesses()
{
    if (planned_ > 0) {
        root_.skip(std::exchange(planned_, 0), root_.sampleRateHz());
    }
}

void CAudioPlanner::waitLonger()
{
    quietWanted_ = std::clamp(2 * quietWanted_, kShortestQuiet, kLongestQuiet);
}

// --- writing down

void CAudioPlanner::beginStep(CAudioGraph& inner)
{
    count_ = offered();
    if (haveChangesCome() && isRipe_ && !root_.takeUpSteadily(0, root_.sampleRateHz())) {
        isRipe_ = false;
        quietSamples_ = 0;
    }
    count_ = isRipe_ ? std::min(count_, kStepWritten) : count_;
    const bool isWanted =
        isRipe_ && count_ == kStepWritten && count_ + kSamplesWanted <= steady_ && mayPlan();
    builder_ = isWanted ? CAudioPlanBuilder::acquire() : nullptr;
    if (!builder_) {
        return;
    }
    readInputs();
    CInlineArray<CBufferRef, 16> buffers;
    for (const Channel& channel : inputs_) {
        buffers.push(root_.input(channel.port).links()[0]->head(channel.number)->buffer);
    }
    hasAllOutputs_ = true;
    stepsWritten_ = 0;
    inner_ = &inner;
    inner.planBuilder = builder_;
    builder_->begin(graph_.kernels, count_, {buffers.data(), buffers.size()});
}

void CAudioPlanner::readInputs()
{
    inputs_.clear();
    for (int port = 0; port < root_.inputCount(); ++port) {
        const CAudioLink& link = *root_.input(port).links()[0];
        forEachChannel(link.channels(), [&](int number) {
            inputs_.push({port, number, link.head(number)->format});
        });
    }
}

// The sooner a step ends that begins or ends a fade, the sooner the rest can be run from a plan.
int CAudioPlanner::longestStep() const
{
    if (builder_) {
        return count_;
    }
    if (!mayPlan() || quietWanted_ > 0 || count_ == 0) {
        return kLongestStep;
    }
    const int horizon =
        isRipe_ ? static_cast<int>(std::min<std::int64_t>(steady_, kLongestStep)) : kLongestStep;
    return quietSamples_ == 0 ? kStepWritten : horizon;
}

void CAudioPlanner::takeOutputs(const CAudioLink& drain)
{
    if (!builder_) {
        return;
    }
    ++stepsWritten_;
    outputs_.clear();
    outputBuffers_.clear();
    forEachChannel(drain.channels(), [&](int number) {
        const CAudioChunk* chunk = drain.onlyChunk(number);
        hasAllOutputs_ = hasAllOutputs_ && chunk && chunk->count == count_;
        if (hasAllOutputs_) {
            outputs_.push({0, number, chunk->format});
            outputBuffers_.push(chunk->buffer);
        }
    });
    builder_->end({outputBuffers_.data(), outputBuffers_.size()});
}

void CAudioPlanner::endStep()
{
    if (builder_) {
        makePlan();
        return;
    }
    quietSamples_ = count_ > 0 ? std::min(quietSamples_ + count_, kLongestQuiet) : 0;
    lookAhead();
}

void CAudioPlanner::lookAhead()
{
    steady_ = quietSamples_ >= quietWanted_ ? root_.steadySamples(root_.sampleRateHz()) : 0;
    isRipe_ = steady_ > 0;
}

void CAudioPlanner::makePlan()
{
    if (stepsWritten_ == 0) {
        builder_->end({});
    }
    steady_ = root_.steadySamples(root_.sampleRateHz());
    const bool isSound = stepsWritten_ == 1 && hasAllOutputs_ && steady_ > 0;
    if (!isSound || !builder_->build(plan_, steady_ != CAudioProcessBase::kForever)) {
        waitLonger();
    }
    builder_->giveBack();
    builder_ = nullptr;
    inner_->planBuilder = nullptr;
    isRipe_ = false;
    quietSamples_ = 0;
}

} // namespace qel
