// Root of all run-time processes of the signal graph.
#pragma once

#include "CAudioLink.h"
#include "CAudioProcessSlots.h"
#include "CCheckedObject.h"
#include "CError.h"

#include <memory>
#include <utility>
#include <vector>

namespace qel {

class CAudioProcessDefBase;
class CGraphVisitor;

// A process takes streams at its input ports and hands streams on at its output ports. It has no block size:
// process() works in steps, each as long as what every channel of every connected input can deliver at that
// moment, until one of them is dry.
//
// Made by its definition's createProcess(), then place(), init() (recursively), bindParams(),
// registerKernels(), resolveKernels(), and steps. Owned by the compound that runs it. Everything from the
// first step on happens on the audio thread, without locks; it allocates only where the topology, the rate or
// a step length is new.
class CAudioProcessBase : public CCheckedObject, private CAudioParamMark
{
public:
    // The group of a process that takes each channel's group from its stream.
    static constexpr int kGroupOfChannel = -1;

    explicit CAudioProcessBase(const CAudioProcessDefBase& def) : def_(def) {}

    // Gives the process its surroundings. `fullName` is the dotted path of the instance, under which its
    // parameters are found; `group` is that of the stack element it belongs to, or kGroupOfChannel.
    void place(CAudioGraph& graph, const CString& fullName, int group);

    // --- building: the instance's thread, before the first step

    virtual CError init();
    // Finds the instance's parameters and makes the slots.
    virtual CError bindParams();
    // Adds the kernels of this class to the context's registry; adding them again changes nothing.
    virtual void registerKernels() {}
    virtual void resolveKernels() {}

    // --- control threads, one at a time, at any time

    // Makes ready what is there once a channel group, bit by bit.
    virtual void prepareGroups(std::uint32_t groups) { (void)groups; }

    // --- audio thread: no locks, no allocation but from memory()

    // From here on the slots follow their parameters.
    virtual void followParams();
    // Takes up the channels and formats of the inputs after they have changed.
    virtual void syncLinks() {}
    // Takes up parameter values after some have changed, or after the format has.
    virtual void applyEvents() {}
    // Works off what the inputs hold. False if it ended because an input is dry, true if there was no stream
    // at all.
    virtual bool process();
    // Called instead of process() while the process is out of the graph: takes up parameter changes at once,
    // since no stream comes that could bring their time.
    virtual void idle();
    // Drops every link that ends or starts here.
    virtual void disconnectAll();
    // Forgets the signal, but neither parameters nor topology; the stream goes on at `positionSec`.
    virtual void reset(double positionSec);

    // Ports come into being when they are first named.
    CAudioInputPort& input(int port)
    {
        const auto index = static_cast<std::size_t>(port);
        return index < inputs_.size() ? *inputs_[index] : addInput(index);
    }
    CAudioOutputPort& output(int port)
    {
        const auto index = static_cast<std::size_t>(port);
        return index < outputs_.size() ? *outputs_[index] : addOutput(index);
    }
    int inputCount() const { return static_cast<int>(inputs_.size()); }

    const CAudioProcessDefBase& def() const { return def_; }
    const CString& fullName() const { return fullName_; }
    // Of the stack element this process belongs to, or kGroupOfChannel.
    int group() const { return group_; }
    // Rate of the stream here; time shift and latency are those of port 0.
    double sampleRateHz() const { return format_.sampleRateHz; }
    const CAudioStreamFormat& format() const { return format_; }
    double positionSec() const { return positionBehind(0, format_.sampleRateHz); }

    // One channel of port 0 as this process sees it now.
    struct Channel
    {
        int number;
        const CAudioStreamFormat* format;
    };
    const CInlineArray<Channel, 8>& channels() const { return channels_; }

    // A number that is another one wherever the settings taken up so far give the stream other rates,
    // channels or groups, which no fade inside the graph could lead over.
    virtual std::uint32_t layout() const { return 0; }

    // True if layout(), groupsWanted() or rateFactor() depend on the settings of this very process.
    virtual bool hasLayout() const { return false; }

    // The channel groups that the settings taken up so far call for.
    virtual std::uint32_t groupsWanted() const { return 0; }
    // By how much the settings taken up so far raise the rate inside, at the most.
    virtual int rateFactor() const { return 1; }

    // The longest span of its input that is worth giving it at once.
    virtual int longestStep() const { return kLongestStep; }

    // True until the first step of a stream is done: at its start, after silence and after a reset. What is
    // changed then has nothing to fade from.
    bool isBeginning() const { return isBeginning_; }

    // Between steps: for so many samples at this rate, steps of the same streams will run the same kernels as
    // the step before, as long as no change comes in. 0 where something is under way here or in what works
    // inside, kForever where nothing is; in between, instances are being faded that long.
    virtual std::int64_t steadySamples(double rateHz) const;
    static constexpr std::int64_t kForever = std::int64_t{1} << 62;
    // Takes up the changes that are due behind so many samples at this rate, which the process does not know
    // of yet, for a graph that is steady and has to stay so. False where a change has come that steps would
    // have to run other kernels for, or be cut: that one is left for the next step. Nothing inside is asked.
    virtual bool takeUpSteadily(std::int64_t aheadSamples, double rateHz);
    // The stream has gone on by so many samples at this rate without this process and what works inside.
    // Changes that have fallen due on the way are taken up.
    virtual void skip(std::int64_t samples, double rateHz);

    // For printing a live graph.
    virtual void visit(CGraphVisitor& visitor) const;

protected:
    // The same for all processes of a graph that work; those that rest take up all that has come.
    static bool takeUpAllSteadily(CAudioGraph& graph, std::int64_t aheadSamples, double rateHz);
    // idle() for all processes of a graph of which none works.
    static void idleAll(CAudioGraph& graph);

    enum class EStep : std::uint8_t
    {
        kDone,   // there may be another
        kDry,    // an input holds no more
        kSilent, // there is no stream
    };
    // One turn of process().
    EStep processStep();

    // True between steps if nothing but changes waits here.
    bool isSettled() const;
    // Applies what takePassedEvents() has taken up.
    void applyPassedEvents()
    {
        if (std::exchange(mustApplyEvents_, false)) {
            applyEvents();
        }
    }
    // True if changes wait to become due.
    bool hasEvents() const { return isRaised(); }
    // The same, or to be applied.
    bool hasChanges() const { return mustApplyEvents_ || hasEvents(); }
    // So many samples at a rate are as many at the rate here.
    std::int64_t samplesHere(std::int64_t samples, double rateHz) const;
    // How many parameter slots the process knows, numbered from 0.
    virtual int slotCount() const { return 0; }
    // A step of `count` samples; what it gathers is consumed by process() afterwards.
    virtual void step(int count) = 0;
    // The longest step from here on, at most `count`: modules cut where a fade ends.
    virtual int limitStep(int count) const { return count; }
    // True if nothing will be heard of a change that comes before the end of a step of `count` samples: it
    // needs not cut the step.
    virtual bool isUnheard(int count) const
    {
        (void)count;
        return false;
    }
    // Called where there would be a step but no input has a stream: takes up parameters at once. Containers
    // tell those inside, and hand on what these leave.
    virtual void beSilent() { idle(); }
    // Called at the start of each step, before the inputs are looked at.
    virtual void beginStep() {}

    // Takes up the changes dated before this time. True if there were any.
    bool takeChangesUntil(double limitSec);
    // takeUpSteadily() where changed settings are no matter of kernels: `applies()` takes them up as
    // applyEvents() does, or says that it cannot.
    template <class Applies>
    bool takeUpSteadily(std::int64_t aheadSamples, double rateHz, Applies&& applies)
    {
        if (graph_->holdsSettings) {
            return false;
        }
        mustApplyEvents_ = applyDueEvents(positionBehind(aheadSamples, rateHz)) || mustApplyEvents_;
        graph_->changesWait |= hasEvents();
        if (isUnheard(0)) {
            return true;
        }
        mustApplyEvents_ = mustApplyEvents_ && !applies();
        return !hasChanges();
    }

    CAudioGraph& graph() const { return *graph_; }
    // For what comes into being while the graph runs.
    CAudioMemory& memory() const { return graph_->kernels.memory(); }
    CAudioProcessSlots& slots() { return slots_; }
    const CAudioProcessSlots& slots() const { return slots_; }

private:
    void traceUnknownSlots() const;
    CAudioInputPort& addInput(std::size_t port);
    CAudioOutputPort& addOutput(std::size_t port);
    int available() const;
    bool takeUpFormats();
    double positionBehind(std::int64_t samples, double rateHz) const;
    bool applyDueEvents(double atSec);
    int limitToNextEvent(int count) const;
    void takePassedEvents();
    double timeShiftSec() const;

    const CAudioProcessDefBase& def_;
    CAudioGraph* graph_ = nullptr;
    CString fullName_;
    int group_ = kGroupOfChannel;
    CAudioProcessSlots slots_;
    CInlineArray<std::unique_ptr<CAudioInputPort>, 1> inputs_;
    CInlineArray<std::unique_ptr<CAudioOutputPort>, 1> outputs_;
    CInlineArray<Channel, 8> channels_;
    CChannelMask channelMask_ = 0;
    CAudioStreamFormat format_;
    double basePositionSec_ = 0.0;     // where the stream had this rate first
    std::int64_t positionSamples_ = 0; // since then
    bool mustApplyEvents_ = true;
    bool isBeginning_ = true;
    std::uint32_t lastStep_ = 0; // of the whole, that this one took part in
};

} // namespace qel
