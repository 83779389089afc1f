// A change to a parameter on its way to the audio thread and into the slots.
#pragma once

#include "CAudioParamStorage.h"

#include <memory>
#include <vector>

namespace qel {

class CAudioParam;
class CAudioParamEvent;
class CAudioParamEventPool;
struct CAudioParamBinding;

// The place of an event in one queue.
struct CAudioParamEventNode
{
    CAudioParamEvent* event = nullptr;
    CAudioParamBinding* binding = nullptr;
    CAudioParamEventNode* next = nullptr;
    bool isReserve = false; // comes from the reserve of the audio side
};

// A change record with its own copy of the values (up to 16 numbers inside the event) and of the strings they
// stand for, and one queue node for each slot that was bound when it was made: so handing it out on the audio
// thread costs no memory. Lives in a CAudioParamEventPool.
//
// A control thread fills it; from the moment its batch is taken it belongs to the audio thread, whose plain
// count says how many places still need it. The last release() sends it back to the control side.
class CAudioParamEvent
{
public:
    static constexpr std::size_t kInlineValues = 16;

    CAudioParamEvent() = default;
    CAudioParamEvent(const CAudioParamEvent&) = delete;
    CAudioParamEvent& operator=(const CAudioParamEvent&) = delete;

    CAudioParam& getParam() const { return *param_; }
    const CAudioParamChange& getChange() const { return change_; }
    // Seconds: within the processing call until the audio side dates it, then on the clock of CAudioEnv.
    double getTime() const { return change_.time; }

    // --- control threads, while the event is in no batch or in one that was not taken

    void set(CAudioParam& param, const CAudioParamChange& change);
    // Counts it at its parameter until it arrives or is dropped, if it will overwrite what the audio thread
    // may have set itself.
    void depart();
    // Ends that. Whoever still has the event may call it: the audio thread on its arrival, or the pool.
    void arrive();
    // Brings along `count` rooms like that of a storage that has taken the change, with the usual groups at
    // the least: for storages of the audio side that have no place for it.
    void bringRooms(std::size_t count, const CAudioParamStorage& model);
    bool bringsRooms() const { return !rooms_.empty(); }
    // Makes it the event that gives the audio side's own storage its format: `storage` takes its place there.
    // Slots take no notice of it.
    void setReplacement(CAudioParam& param, std::unique_ptr<CAudioParamStorage> storage);
    // True if nothing would be lost were this event dropped in favour of `later`, which comes behind it.
    bool isSupersededBy(const CAudioParam& param, const CAudioParamChange& later) const;

    // --- audio thread: no locks, no allocation

    // Carries the change out; a storage of another format ignores it and gives false.
    bool applyTo(CAudioParamStorage& storage);
    // The same for the audio side's own storage of the parameter.
    void applyToAudio(CAudioParamStorage& storage);
    bool isAudioOwned() const { return isAudioOwned_; }
    bool isReplacement() const { return replacement_ != nullptr; }
    void shiftTime(double seconds) { change_.time += seconds; }
    void retain() { ++references_; }
    void release();

    CAudioParamEvent* next = nullptr;       // in a batch, then in the parameter's list of pending events
    CAudioParamEvent* retireNext = nullptr; // in a free list

private:
    friend class CAudioParamEventPool;

    CAudioParamEventPool* home_ = nullptr;
    CAudioParam* param_ = nullptr;
    CAudioParamChange change_;
    CInlineArray<double, kInlineValues> values_;
    CAudioParamData pool_;
    std::unique_ptr<CAudioParamStorage> replacement_;
    std::vector<CAudioParamStorage::Room> rooms_; // those that were used hold the old ones
    std::size_t roomsUsed_ = 0;
    CAudioParamEventNode* nodes_ = nullptr;
    std::int32_t references_ = 0;
    bool isCounted_ = false;    // between depart() and arrive()
    bool isAudioOwned_ = false; // goes back to the audio side's own reserve
};

} // namespace qel
