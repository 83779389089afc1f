// Which calls of a plan run as one, and in which order.
#pragma once

#include "PlanCalls.h"

#include <span>

namespace qel {

// Calls of a chain that a kernel can do in one (CKernelJoin) become one unit, any other call is a unit of its
// own. Two units that do the same, and of which neither waits for the other, become a pair where the kernel
// has a form for two. Units keep their order as far as that allows.
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
        plan::Index partner;     // kNone: alone
        plan::Index nextOfDepth; // among those that have none
    };

    // Takes the calls that are not left out; `wanted` are the values that others read.
    void arrange(std::span<const plan::Call> calls, std::span<const plan::Buffer> buffers,
                 std::span<const plan::Index> wanted);

    // Writes to all of its memory.
    void warmUp();

    // In the order they run; a pair stands at the place of its first.
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
    void findPartner(plan::Index index);
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
    std::array<plan::Index, plan::kMaxCalls + 1> single_;  // by depth: a unit without a partner
};

} // namespace qel
