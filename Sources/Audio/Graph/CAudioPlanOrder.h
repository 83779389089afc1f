// Which calls of a plan run as one, and in which order.
#pragma once

#include "PlanCalls.h"

#include <span>

namespace qel {

// Calls of a chain that a kernel can do in one (CKernelJoin) become one unit, any other call is a unit of its
// own. Units that do the same, and of which none waits for another, go together as far as the kernel has
// forms for several. Units keep their order as far as that allows.
//
// A unit's depth is one more than that of the deepest unit it has to wait for: because that has made what it
// reads, or has still to read what it overwrites. So units of one depth may run side by side, and nothing
// waits for itself.
class CAudioPlanOrder
{
public:
    static constexpr std::size_t kMaxParts = 8;

    struct Unit
    {
        const CKernelJoin* join; // null: one call
        std::array<plan::Index, kMaxParts> calls;
        std::uint8_t callCount;
        bool isPlaced;
        plan::Index depth;
        plan::Index companion; // the next of those that go together, kNone: none
        // Of the first of these:
        plan::Index last;
        std::uint8_t count;
        plan::Index nextOpen; // of its depth that may take more
    };

    // Takes the calls that are not left out; `wanted` are the values that others read.
    void arrange(std::span<const plan::Call> calls, std::span<const plan::Buffer> buffers,
                 std::span<const plan::Index> wanted);

    // Writes to all of its memory.
    void warmUp();

    // The most units that may go with this one, itself included.
    std::size_t widest(const Unit& unit) const;

    // In the order they run; those that go together stand at the place of the first.
    std::span<const plan::Index> order() const { return {order_.data(), placed_}; }
    std::size_t unitCount() const { return unitCount_; }
    const Unit& unit(plan::Index index) const { return units_[index]; }

private:
    void countReaders(std::span<const plan::Index> wanted);
    void formUnits();
    bool formJoin(Unit& unit, const CKernelJoin& join, plan::Index first);
    plan::Index partFor(const Unit& unit, const CKernelPart& part) const;
    plan::Index inputOf(const plan::Call& call) const;
    bool keepsToItself(const Unit& unit) const;
    bool isTaken(const Unit& unit, plan::Index call) const;

    void findDepth(Unit& unit);
    void findCompany(plan::Index index);
    bool goTogether(const Unit& a, const Unit& b) const;
    void place(plan::Index index);

    std::span<const plan::Call> calls_;
    std::span<const plan::Buffer> buffers_;
    std::size_t unitCount_ = 0;
    std::size_t placed_ = 0;
    std::size_t firstOpen_ = 0; // all units before it are placed
    std::array<Unit, plan::kMaxCalls> units_;
    std::array<plan::Index, plan::kMaxCalls> order_;
    std::array<bool, plan::kMaxCalls> isInUnit_;           // by call
    std::array<std::uint8_t, plan::kMaxValues> readers_;   // up to 2: more do not matter
    std::array<plan::Index, plan::kMaxValues> lastReader_; // call
    std::array<plan::Index, plan::kMaxBuffers> uses_;      // operands of all calls
    std::array<plan::Index, plan::kMaxBuffers> written_;   // depth, 0: by none
    std::array<plan::Index, plan::kMaxBuffers> read_;      // the same, since then
    std::array<plan::Index, plan::kMaxCalls + 1> open_;    // by depth: the first of some that may take more
};

} // namespace qel
