// What the audio thread has of one parameter.
#pragma once

#include "CAudioParamBinding.h"
#include "CAudioParamMailbox.h"
#include "CAudioParamStorage.h"

#include <atomic>
#include <cstdint>

namespace qel {

class CAudioParam;
class CAudioParamEvent;
class CAudioParamEventPool;

// A part of a CAudioParam: its values as they stand in the audio thread, the events that are on their way
// into them, and the slots bound to the parameter. Events and strings that are done with go back to the pool
// of the parameter's collector.
class CAudioParamAudioSide
{
public:
    CAudioParamAudioSide(CAudioParam& param, CAudioParamEventPool& pool);
    CAudioParamAudioSide(const CAudioParamAudioSide&) = delete;
    CAudioParamAudioSide& operator=(const CAudioParamAudioSide&) = delete;

    // --- control threads

    // Gives a slot that is to follow the parameter its format. False if the parameter has no info.
    bool prepare(CAudioParamBinding& binding);
    // Before the audio side runs: these values hold here and in all slots.
    void start(const CAudioParamStorage& values);
    // Whether some storage here has no room for a change that `current` has taken. Under the lock of
    // CAudioEnv.
    bool outgrows(const CAudioParamChange& change, const CAudioParamStorage& current);
    // The rooms that were brought for such a change have not come here.
    void forgetRoom() { groupsWithRoom_ = 1; }

    // --- audio thread, or while it stands still: no locks, no allocation

    // Ties a prepared slot to the parameter: fills it with the values here, and with the changes that are
    // still on their way.
    void bind(CAudioParamBinding& binding);
    void unbind(CAudioParamBinding& binding);
    // They are one processing call behind the events in the queues.
    const CAudioParamStorage& getValues() const { return values_; }

    // --- audio thread, for the collector: no locks, no allocation

    // Hands an event to the slots and keeps it for the values; true if the parameter enters the list of
    // changed ones for this generation.
    bool receive(CAudioParamEvent& event, std::uint32_t generation);
    // Brings the values up to date.
    void applyPending();

    CAudioParam* nextChanged = nullptr; // the collector's list

    // --- any thread

    // How many slots an event may have to go to.
    std::int32_t getBindingCount() const { return bindingCount_.load(std::memory_order_relaxed); }
    // A number that the audio thread itself has set, for control threads to fetch. An event that overwrites
    // it takes it out as it arrives.
    CAudioParamMailbox& outbox() { return outbox_; }
    const CAudioParamMailbox& outbox() const { return outbox_; }
    // Counts the events on their way here that set the first entry of group 0.
    void addOverride() { overrides_.fetch_add(1); }
    void endOverride() { overrides_.fetch_sub(1, std::memory_order_release); }
    bool isOverridden() const { return overrides_.load() > 0; }

private:
    void deliverTo(CAudioParamBinding& binding, CAudioParamEvent& event);

    CAudioParam& param_;
    CAudioParamEventPool& pool_;

    // The audio thread's own.
    CAudioParamStorage values_;
    CAudioParamEvent* firstPending_ = nullptr;
    CAudioParamEvent* lastPending_ = nullptr;
    CAudioParamBinding* bindings_ = nullptr;
    std::uint32_t changedGeneration_ = 0;

    std::int32_t groupsWithRoom_ = 1; // in storages that are tied to no group; under the lock of CAudioEnv
    std::atomic<std::int32_t> bindingCount_{0};
    CAudioParamMailbox outbox_;
    std::atomic<std::int32_t> overrides_{0};
};

} // namespace qel
