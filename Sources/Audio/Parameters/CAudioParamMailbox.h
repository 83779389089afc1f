// One number on its way between threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

namespace qel {

// The last write wins: any thread puts numbers in, any thread takes them out, and nobody waits. Two marks go
// with the latest number, in one atomic word with its sequence number:
//
//   waiting  unsettled
//     no        no      at rest: nothing was put in, or where it went it has arrived
//     yes       yes     put in, and taken by nobody
//     no        yes     taken, and on its way
//     yes       no      put in, but where it is to go the same number stands already
//
//   put()      to the second state, with the next sequence number
//   take()     ends waiting; putBack() begins it again, drop() ends it and forgets the number
//   settle()   ends unsettled, unless something happened since; a reader that nobody asks may leave it out
//
// A number is stored before its mark is set, and read after the mark. So what is read is the number of that
// mark or a later one, whose own mark is still to come: then it is met twice, which a last write bears. When
// all writers are done, number and mark are those of the last.
//
// The order of all operations is total (sequentially consistent), also with other such atomics: who takes a
// number and then looks at one of these misses nothing that was there when another thread saw it waiting.
class CAudioParamMailbox
{
public:
    // What holds at one moment.
    class State
    {
    public:
        std::uint32_t getSequence() const { return word_ / kSequenceStep; }
        bool isWaiting() const { return (word_ & kWaiting) != 0; }
        bool isUnsettled() const { return (word_ & kUnsettled) != 0; }

    private:
        friend class CAudioParamMailbox;
        explicit State(std::uint32_t word) : word_(word) {}
        std::uint32_t word_;
    };

    void put(double value)
    {
        value_.store(value);
        std::uint32_t word = word_.load();
        while (!word_.compare_exchange_weak(word, (word | kWaiting | kUnsettled) + kSequenceStep)) {
        }
    }
    // None if nothing waits.
    std::optional<double> take()
    {
        return State(word_.fetch_and(~kWaiting)).isWaiting() ? std::optional(value_.load()) : std::nullopt;
    }
    // What was taken cannot go on yet.
    void putBack() { word_.fetch_or(kWaiting); }
    // What waits counts no more.
    void drop() { word_.fetch_and(~kWaiting); }
    // `state` is what was seen before the number was brought where it is to go.
    void settle(State state) { word_.compare_exchange_strong(state.word_, state.word_ & ~kUnsettled); }

    State getState() const { return State(word_.load()); }
    // The latest number, whatever has become of it.
    double getLatest() const { return value_.load(); }

private:
    static constexpr std::uint32_t kWaiting = 1;
    static constexpr std::uint32_t kUnsettled = 2;
    static constexpr std::uint32_t kSequenceStep = 4;

    std::atomic<double> value_{0.0};
    std::atomic<std::uint32_t> word_{0};
};

} // namespace qel
