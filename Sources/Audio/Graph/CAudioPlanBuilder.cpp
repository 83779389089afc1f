// Writes down what one step of a graph runs, and makes a plan of it.
#include "CAudioPlanBuilder.h"

#include "CAudioPlanForm.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace qel {

using namespace plan;

CAudioPlanBuilder CAudioPlanBuilder::instance_;
constinit std::atomic<bool> CAudioPlanBuilder::isTaken_{false};

CAudioPlanBuilder* CAudioPlanBuilder::acquire()
{
    return isTaken_.exchange(true, std::memory_order_acquire) ? nullptr : &instance_;
}

void CAudioPlanBuilder::giveBack()
{
    kernels_ = nullptr;
    isTaken_.store(false, std::memory_order_release);
}

// Who has it now has its memory.
void CAudioPlanBuilder::warmUp()
{
    if (CAudioPlanBuilder* const builder = acquire()) {
        builder->calls_.fill({});
        builder->buffers_.fill({});
        builder->bufferOfSlot_.fill(kNone);
        builder->order_.warmUp();
        builder->giveBack();
    }
}

// --- writing down

void CAudioPlanBuilder::begin(CKernelContext& kernels, int count, std::span<const CBufferRef> inputs)
{
    kernels_ = &kernels;
    count_ = static_cast<std::uint32_t>(count);
    refusedCalls_ = kernels.refusedCalls();
    callCount_ = bufferCount_ = outputCount_ = 0;
    isGood_ = isWriting_ = true;
    for (const CBufferRef input : inputs) {
        bufferOf(input);
    }
    inputCount_ = inputs.size();
    isGood_ = bufferCount_ == inputCount_; // each has a buffer of its own
    kernels.takeLongestOfLate();
    kernels.setObserver(this);
}

void CAudioPlanBuilder::end(std::span<const CBufferRef> outputs)
{
    kernels_->setObserver(nullptr);
    longestBuffer_ = kernels_->takeLongestOfLate();
    isWriting_ = false;
    isGood_ = isGood_ && outputs.size() <= kMaxOutputs && kernels_->refusedCalls() == refusedCalls_;
    if (isGood_) {
        classify(outputs);
    }
}

void CAudioPlanBuilder::beforeCall(const CKernelCall& call)
{
    if (!isWriting_ || !isGood_) {
        return;
    }
    const auto operandCount = static_cast<std::size_t>(call.entry->operandCount);
    if (Call* added = addCall(call.count, operandCount)) {
        added->entry = call.entry;
        added->scalar = call.scalar;
        for (std::size_t i = 0; i < operandCount; ++i) {
            addOperand(*added, call.operand(i));
        }
    }
}

void CAudioPlanBuilder::runWhole(CAudioGraph& graph, CAudioWholeModule& module, CAudioModuleStep& step)
{
    CAudioPlanBuilder* const builder = graph.planBuilder;
    if (!builder) {
        module.process(step);
        return;
    }
    if (Call* added = builder->addCall(static_cast<std::uint32_t>(step.count), step.inputs.size())) {
        added->module = &module;
        added->channelCount = step.channelCount;
        for (const CBufferRef input : step.inputs) {
            builder->addOperand(*added, input);
        }
    }
    builder->isWriting_ = false;
    module.process(step);
    builder->isWriting_ = true;
}

Call* CAudioPlanBuilder::addCall(std::uint32_t count, std::size_t operandCount)
{
    isGood_ = isGood_ && callCount_ < kMaxCalls && operandCount <= kMaxKernelOperands && count > 0 &&
              count % count_ == 0;
    if (!isGood_) {
        return nullptr;
    }
    Call& call = calls_[callCount_++];
    call = {};
    call.count = count;
    call.ratio = count / count_;
    return &call;
}

void CAudioPlanBuilder::addOperand(Call& call, CBufferRef ref)
{
    call.buffers[call.operandCount++] = bufferOf(ref);
}

// A reference into the middle of a buffer is of another buffer than the whole, and equal memory: too much to
// keep apart.
Index CAudioPlanBuilder::bufferOf(CBufferRef ref)
{
    if (ref.isNone()) {
        isGood_ = false;
        return 0;
    }
    Index& known = bufferOfSlot_[ref.slot()];
    const std::uint16_t generation = kernels_->pool().generation(ref);
    if (known < bufferCount_ && buffers_[known].ref.slot() == ref.slot() &&
        buffers_[known].generation == generation) {
        isGood_ = isGood_ && buffers_[known].ref == ref;
        return known;
    }
    if (bufferCount_ == kMaxBuffers) {
        isGood_ = false;
        return 0;
    }
    known = static_cast<Index>(bufferCount_++);
    Buffer& buffer = buffers_[known];
    buffer = {};
    buffer.ref = ref;
    buffer.generation = generation;
    return known;
}

// What is still in use behind a step, and neither goes in nor comes out, belongs to a module.
void CAudioPlanBuilder::classify(std::span<const CBufferRef> outputs)
{
    const CBufferPool& pool = kernels_->pool();
    const std::size_t known = bufferCount_;
    for (const CBufferRef output : outputs) {
        outputs_[outputCount_++] = bufferOf(output);
    }
    isGood_ = isGood_ && bufferCount_ == known;
    for (std::size_t i = 0; i < bufferCount_; ++i) {
        Buffer& buffer = buffers_[i];
        const bool outlives = pool.isInUse(buffer.ref) && pool.generation(buffer.ref) == buffer.generation;
        buffer.kind = i < inputCount_ ? EKind::kInput : outlives ? EKind::kState : EKind::kTemporary;
        isGood_ = isGood_ && (i < inputCount_ || buffer.ref.byteOffset() == 0);
    }
    for (std::size_t i = 0; i < outputCount_; ++i) {
        Buffer& buffer = buffers_[outputs_[i]];
        buffer.kind = buffer.kind == EKind::kInput ? EKind::kInput : EKind::kTemporary;
    }
}

// --- building

bool CAudioPlanBuilder::build(CAudioStepPlan& plan, bool isForFade)
{
    plan.release();
    if (!isGood_) {
        return false;
    }
    const CAudioPlanForm form({calls_.data(), callCount_}, {buffers_.data(), bufferCount_}, kernels_->pool());
    const std::uint64_t sum = form.sum(inputCount_, {outputs_.data(), outputCount_}, longestBuffer_ / count_);
    if (isForFade && form.takeOver(plan, sum)) {
        return true;
    }
    plan.clear();
    plan.form_ = sum;
    plan.isReady_ = (number(true) || number(false)) && lay(plan) && findTwins(plan);
    if (!plan.isReady_) {
        plan.clear();
    }
    return plan.isReady_;
}

// --- values

// Goes through the calls in their order. False if a value is wanted that is nowhere any more.
bool CAudioPlanBuilder::number(bool joinsTwins)
{
    valueCount_ = 0;
    buckets_.fill(kNone);
    for (std::size_t i = 0; i < bufferCount_; ++i) {
        Buffer& buffer = buffers_[i];
        buffer.first = buffer.value = buffer.held = kNone;
        if (buffer.kind != EKind::kTemporary) {
            buffer.first = buffer.value = buffer.held = newValue(static_cast<Index>(i));
        }
    }
    for (std::size_t i = 0; i < callCount_; ++i) {
        Call& call = calls_[i];
        if (!readOperands(call)) {
            return false;
        }
        call.isLeftOut = !call.entry || (joinsTwins && adoptTwin(call));
        if (!call.isLeftOut && (valueCount_ + kMaxKernelOperands > kMaxValues || !findSources(call))) {
            return false;
        }
    }
    return findOutputs() && findWholeInputs();
}

bool CAudioPlanBuilder::readOperands(Call& call)
{
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        const Buffer& buffer = buffers_[call.buffers[i]];
        call.before[i] = buffer.value;
        if (call.writes(i) ? buffer.kind == EKind::kInput : buffer.value == kNone) {
            return false; // inputs are others' as well; and nobody has written what is read
        }
    }
    return true;
}

// States may differ from call to call, so their contents do not count.
std::size_t CAudioPlanBuilder::bucketOf(const Call& call) const
{
    std::uint64_t hash = reinterpret_cast<std::uintptr_t>(call.entry) >> 3;
    hash = hash * 31 + call.count;
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        const bool isState = buffers_[call.buffers[i]].kind == EKind::kState;
        hash = hash * 31 + (isState ? kNone : call.before[i]);
    }
    return (hash * 0x9E3779B97F4A7C15U) >> (64 - std::bit_width(kBuckets - 1));
}

bool CAudioPlanBuilder::isTwin(const Call& call, const Call& other) const
{
    if (call.entry != other.entry || call.count != other.count ||
        std::bit_cast<std::uint64_t>(call.scalar) != std::bit_cast<std::uint64_t>(other.scalar)) {
        return false;
    }
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        if (call.before[i] != other.before[i] && !isSameState(call, other, i)) {
            return false;
        }
    }
    return true;
}

// States that no call of the step has written yet, with the same bits.
bool CAudioPlanBuilder::isSameState(const Call& call, const Call& other, std::size_t operand) const
{
    const Buffer& a = buffers_[call.buffers[operand]];
    const Buffer& b = buffers_[other.buffers[operand]];
    if (a.kind != EKind::kState || b.kind != EKind::kState || call.before[operand] != a.first ||
        other.before[operand] != b.first) {
        return false;
    }
    return haveSameBits(kernels_->pool(), a.ref, b.ref);
}

bool CAudioPlanBuilder::adoptTwin(Call& call)
{
    const std::size_t bucket = bucketOf(call);
    for (Index index = buckets_[bucket]; index != kNone; index = calls_[index].nextInBucket) {
        const Call& other = calls_[index];
        if (isTwin(call, other)) {
            call.standIn = index;
            for (std::size_t i = 0; i < call.operandCount; ++i) {
                if (call.writes(i)) {
                    buffers_[call.buffers[i]].value = other.after[i];
                }
            }
            return true;
        }
    }
    const auto index = static_cast<Index>(&call - calls_.data());
    call.nextInBucket = std::exchange(buckets_[bucket], index);
    return false;
}

// From here on the call stands on the buffers that hold what it reads.
bool CAudioPlanBuilder::findSources(Call& call)
{
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        if (call.before[i] == kNone) {
            continue;
        }
        const Index holder = holderOf(call.buffers[i], call.before[i]);
        if (holder == kNone || (call.writes(i) && holder != call.buffers[i])) {
            return false;
        }
        call.sources[i] = holder;
    }
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        if (call.writes(i)) {
            const Index index = call.buffers[i];
            Buffer& buffer = buffers_[index];
            call.sources[i] = index;
            call.after[i] = buffer.value = buffer.held = newValue(index);
        }
    }
    return true;
}

Index CAudioPlanBuilder::holderOf(Index buffer, Index value) const
{
    if (buffers_[buffer].held == value) {
        return buffer;
    }
    const Index holder = holders_[value];
    return buffers_[holder].held == value ? holder : kNone;
}

Index CAudioPlanBuilder::newValue(Index buffer)
{
    holders_[valueCount_] = buffer;
    return static_cast<Index>(valueCount_++);
}

// An output of the step is what its buffer is worth at the end, wherever that lies.
bool CAudioPlanBuilder::findOutputs()
{
    wantedCount_ = 0;
    for (std::size_t i = 0; i < outputCount_; ++i) {
        const Index value = buffers_[outputs_[i]].value;
        const Index holder = value == kNone ? kNone : holderOf(outputs_[i], value);
        if (holder == kNone || buffers_[holder].kind == EKind::kState) {
            return false;
        }
        outputSources_[i] = holder;
        wantedValues_[wantedCount_++] = value;
    }
    return true;
}

// Whole modules run behind all calls, so what they read has to be there still.
bool CAudioPlanBuilder::findWholeInputs()
{
    for (std::size_t i = 0; i < callCount_; ++i) {
        Call& call = calls_[i];
        for (std::size_t j = 0; j < call.operandCount && !call.entry; ++j) {
            const Index holder = holderOf(call.buffers[j], call.before[j]);
            if (holder == kNone || buffers_[holder].kind == EKind::kState || wantedCount_ == kMaxWanted) {
                return false;
            }
            call.sources[j] = holder;
            wantedValues_[wantedCount_++] = call.before[j];
        }
    }
    return true;
}

namespace {

// A state whose calls were left out.
bool hasTwin(const Buffer& buffer)
{
    return buffer.kind == EKind::kState && buffer.value != buffer.held;
}

} // namespace

// States whose calls were left out follow those of their twins.
bool CAudioPlanBuilder::findTwins(CAudioStepPlan& plan)
{
    const CBufferPool& pool = kernels_->pool();
    for (std::size_t i = 0; i < bufferCount_; ++i) {
        const Buffer& buffer = buffers_[i];
        if (!hasTwin(buffer)) {
            continue;
        }
        const Buffer& running = buffers_[holders_[buffer.value]];
        const std::size_t bytes = pool.bytes(buffer.ref);
        if (running.kind != EKind::kState || running.held != buffer.value ||
            pool.bytes(running.ref) != bytes || plan.twins_.size() == CAudioStepPlan::kMaxTwins) {
            return false;
        }
        plan.twins_.push_back({pool.address(running.ref), pool.address(buffer.ref),
                               static_cast<std::uint32_t>(bytes), holders_[buffer.value],
                               static_cast<Index>(i)});
    }
    for (std::size_t i = 0; i < callCount_; ++i) {
        const Call& call = calls_[i];
        if (call.entry && call.isLeftOut && plan.standIns_.size() == CAudioStepPlan::kMaxStandIns) {
            return false;
        }
        if (call.entry && call.isLeftOut) {
            plan.standIns_.push_back({static_cast<Index>(i), call.standIn});
        }
    }
    return true;
}

// --- laying it out

bool CAudioPlanBuilder::lay(CAudioStepPlan& plan)
{
    makeRoom(plan);
    if (longestBuffer_ % count_ != 0 || !nameSignals(plan)) {
        return false;
    }
    order_.arrange({calls_.data(), callCount_}, {buffers_.data(), bufferCount_},
                   {wantedValues_.data(), wantedCount_});
    hideLinks();
    findLastUses();
    freeCount_ = memoryCount_ = 0;
    for (std::size_t place = 0; place < order_.order().size(); ++place) {
        if (!layUnits(plan, static_cast<Index>(place))) {
            return false;
        }
    }
    return carve(plan);
}

void CAudioPlanBuilder::makeRoom(CAudioStepPlan& plan) const
{
    std::size_t kernels = 0;
    std::size_t wholes = 0;
    std::size_t twins = 0;
    for (const Call& call : std::span(calls_).first(callCount_)) {
        kernels += !call.isLeftOut;
        wholes += !call.entry;
    }
    for (const Buffer& buffer : std::span(buffers_).first(bufferCount_)) {
        twins += hasTwin(buffer);
    }
    plan.makeRoom(kernels, callCount_ - kernels - wholes, wholes, twins);
}

bool CAudioPlanBuilder::nameSignals(CAudioStepPlan& plan)
{
    std::uint8_t signal = 0;
    for (std::size_t i = 0; i < bufferCount_; ++i) {
        buffers_[i].memory = buffers_[i].lastUse = kNone;
        buffers_[i].isHidden = false;
        buffers_[i].signal = CAudioStepPlan::kNoSignal;
        if (i < inputCount_ && !nameSignal(plan, static_cast<Index>(i), 1, signal)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < outputCount_; ++i) {
        if (!nameSignal(plan, outputSources_[i], 1, signal)) {
            return false;
        }
        plan.outputs_.push(signal);
    }
    for (std::size_t i = 0; i < callCount_; ++i) {
        if (!calls_[i].entry && !layWhole(plan, calls_[i])) {
            return false;
        }
    }
    return true;
}

// False if there are too many, or the buffer is one already at another rate.
bool CAudioPlanBuilder::nameSignal(CAudioStepPlan& plan, Index index, std::uint32_t ratio,
                                   std::uint8_t& outSignal)
{
    Buffer& buffer = buffers_[index];
    if (buffer.signal == CAudioStepPlan::kNoSignal) {
        if (plan.signalCount() == CAudioStepPlan::kMaxSignals) {
            return false;
        }
        buffer.signal = static_cast<std::uint8_t>(plan.signalCount());
        plan.signalRatios_.push(static_cast<std::uint16_t>(ratio));
    }
    outSignal = buffer.signal;
    return plan.signalRatios_[buffer.signal] == ratio;
}

bool CAudioPlanBuilder::layWhole(CAudioStepPlan& plan, const Call& call)
{
    if (plan.wholes_.size() == CAudioStepPlan::kMaxWholes) {
        return false;
    }
    CAudioStepPlan::Whole& whole = plan.wholes_.emplace_back();
    whole.module = call.module;
    whole.ratio = static_cast<int>(call.ratio);
    whole.channelCount = call.channelCount;
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        std::uint8_t signal = 0;
        if (!nameSignal(plan, call.sources[i], call.ratio, signal)) {
            return false;
        }
        whole.signals.push(signal);
    }
    return true;
}

// Calls function(call) for each call that runs at a place.
template <class Function>
void CAudioPlanBuilder::forCallsAt(Index place, Function&& function)
{
    for (Index index = order_.order()[place]; index != kNone; index = order_.unit(index).companion) {
        const CAudioPlanOrder::Unit& unit = order_.unit(index);
        for (std::size_t part = 0; part < unit.callCount; ++part) {
            function(calls_[unit.calls[part]]);
        }
    }
}

// What one part of a unit hands to another stays in registers, unless that works in place.
void CAudioPlanBuilder::hideLinks()
{
    for (std::size_t i = 0; i < order_.unitCount(); ++i) {
        const CAudioPlanOrder::Unit& unit = order_.unit(static_cast<Index>(i));
        for (std::size_t part = 1; part < unit.callCount; ++part) {
            const int from = unit.join->parts[part].source;
            if (from != CKernelPart::kInput) {
                const Index link = calls_[unit.calls[static_cast<std::size_t>(from)]].sources[0];
                buffers_[link].isHidden = calls_[unit.calls[part]].sources[0] != link;
            }
        }
    }
}

void CAudioPlanBuilder::findLastUses()
{
    for (std::size_t place = 0; place < order_.order().size(); ++place) {
        forCallsAt(static_cast<Index>(place), [&](const Call& call) {
            for (std::size_t i = 0; i < call.operandCount; ++i) {
                buffers_[call.sources[i]].lastUse = static_cast<Index>(place);
            }
        });
    }
}

// All that runs at a place has memory of its own while it does.
bool CAudioPlanBuilder::layUnits(CAudioStepPlan& plan, Index place)
{
    const CAudioPlanOrder::Unit& first = order_.unit(order_.order()[place]);
    if (plan.calls_.size() + first.count * first.callCount > CAudioStepPlan::kMaxCalls) {
        return false;
    }
    std::size_t call = plan.calls_.size();
    for (std::size_t left = first.count; left > 0;) {
        const std::size_t lanes = std::bit_floor(left);
        layEntry(plan, first, lanes, static_cast<Index>(call));
        call += lanes * first.callCount;
        left -= lanes;
    }
    forCallsAt(place, [&](const Call& each) {
        for (std::size_t i = 0; i < each.operandCount; ++i) {
            giveMemory(buffers_[each.sources[i]]);
        }
    });
    bool isLaid = true;
    forCallsAt(place, [&](const Call& each) { isLaid = isLaid && layKernel(plan, each); });
    forCallsAt(place, [&](const Call& each) { takeMemory(each, place); });
    return isLaid && memoryCount_ <= kMaxMemories;
}

// What runs one unit, two or four.
void CAudioPlanBuilder::layEntry(CAudioStepPlan& plan, const CAudioPlanOrder::Unit& unit, std::size_t lanes,
                                 Index call)
{
    const CKernelEntry& entry = *calls_[unit.calls[0]].entry;
    CAudioStepPlan::Entry& laid = plan.entries_.emplace_back();
    laid.call = call;
    laid.single = entry.function;
    if (unit.join) {
        laid.group = lanes == 4 ? unit.join->quad : lanes == 2 ? unit.join->pair : unit.join->one;
    } else {
        laid.group = lanes == 4 ? entry.quad : lanes == 2 ? entry.pair : nullptr;
    }
}

void CAudioPlanBuilder::giveMemory(Buffer& buffer)
{
    if (buffer.kind == EKind::kTemporary && buffer.signal == CAudioStepPlan::kNoSignal && !buffer.isHidden &&
        buffer.memory == kNone) {
        buffer.memory = freeCount_ > 0 ? free_[--freeCount_] : static_cast<Index>(memoryCount_++);
    }
}

void CAudioPlanBuilder::takeMemory(const Call& call, Index place)
{
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        Buffer& buffer = buffers_[call.sources[i]];
        if (buffer.lastUse == place && buffer.memory != kNone && freeCount_ < kMaxMemories) {
            free_[freeCount_++] = std::exchange(buffer.memory, kNone);
        }
    }
}

// A call's addresses: those of states are known, those of signals come with every piece, and what lies
// between calls has a number until carve() knows how large it may be.
bool CAudioPlanBuilder::layKernel(CAudioStepPlan& plan, const Call& call)
{
    const std::size_t index = plan.calls_.size();
    CKernelCall& laid = plan.calls_.emplace_back();
    laid.entry = call.entry;
    laid.scalar = call.scalar;
    for (std::size_t i = 0; i < call.operandCount; ++i) {
        const Buffer& buffer = buffers_[call.sources[i]];
        const bool isOwn = call.sources[i] == call.buffers[i];
        if (!isOwn && (buffer.kind == EKind::kState || buffers_[call.buffers[i]].kind == EKind::kState)) {
            plan.form_ = 0;
        }
        laid.operandBits[i] = buffer.memory;
        if (buffer.kind == EKind::kState) {
            laid.data[i] = kernels_->address(buffer.ref);
        } else if (buffer.signal != CAudioStepPlan::kNoSignal) {
            if (plan.patches_.size() == CAudioStepPlan::kMaxPatches) {
                return false;
            }
            plan.patches_.push_back({static_cast<Index>(index), static_cast<std::uint8_t>(i), buffer.signal});
        }
    }
    plan.ratios_.push_back(static_cast<std::uint16_t>(call.ratio));
    plan.origins_.push_back(static_cast<Index>(&call - calls_.data()));
    return true;
}

// Divides the plan's memory among the buffers, and so finds how long a piece may be.
bool CAudioPlanBuilder::carve(CAudioStepPlan& plan)
{
    std::size_t ratio = std::max<std::size_t>(longestBuffer_ / count_, 1);
    for (const std::uint16_t each : plan.ratios_) {
        ratio = std::max<std::size_t>(ratio, each);
    }
    constexpr std::size_t kLine = CAudioMemory::kAlignment / sizeof(double);
    const std::size_t parts = std::max(memoryCount_, kMinMemories);
    const std::size_t room = CAudioStepPlan::kArenaSamples / parts / kLine * kLine;
    double* const arena = plan.arena_.data();
    for (CKernelCall& call : plan.calls_) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(call.entry->operandCount); ++i) {
            if (call.operandBits[i] != kNone) {
                call.data[i] = arena + call.operandBits[i] * room;
            }
        }
    }
    plan.longestPiece_ = static_cast<int>(room / ratio);
    return plan.longestPiece_ >= kShortestPiece;
}

} // namespace qel
