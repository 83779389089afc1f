// Which calls of a plan run as one, and in which order.
#include "CAudioPlanOrder.h"

#include <algorithm>
#include <utility>

namespace qel {

using namespace plan;

void CAudioPlanOrder::arrange(std::span<const Call> calls, std::span<const Buffer> buffers,
                              std::span<const Index> wanted)
{
    calls_ = calls;
    buffers_ = buffers;
    countReaders(wanted);
    formUnits();
    written_.fill(0);
    read_.fill(0);
    open_.fill(kNone);
    for (std::size_t i = 0; i < unitCount_; ++i) {
        findDepth(units_[i]);
        findCompany(static_cast<Index>(i));
    }
    placed_ = firstOpen_ = 0;
    for (std::size_t i = 0; i < unitCount_; ++i) {
        place(static_cast<Index>(i));
    }
}

void CAudioPlanOrder::warmUp()
{
    units_.fill({});
    order_.fill(0);
    lastReader_.fill(0);
}

// --- units

void CAudioPlanOrder::countReaders(std::span<const Index> wanted)
{
    readers_.fill(0);
    uses_.fill(0);
    for (const Index value : wanted) {
        readers_[value] = 2; // somebody outside as well
    }
    for (std::size_t i = 0; i < calls_.size(); ++i) {
        const Call& call = calls_[i];
        for (std::size_t j = 0; j < call.operandCount && !call.isLeftOut; ++j) {
            ++uses_[call.sources[j]];
            if (call.before[j] != kNone) {
                readers_[call.before[j]] =
                    static_cast<std::uint8_t>(std::min(readers_[call.before[j]] + 1, 2));
                lastReader_[call.before[j]] = static_cast<Index>(i);
            }
        }
    }
}

void CAudioPlanOrder::formUnits()
{
    unitCount_ = 0;
    isInUnit_.fill(false);
    for (std::size_t i = 0; i < calls_.size(); ++i) {
        if (calls_[i].isLeftOut || isInUnit_[i]) {
            continue;
        }
        Unit& unit = units_[unitCount_++];
        const auto first = static_cast<Index>(i);
        const std::span<const CKernelJoin> joins = calls_[i].entry->joins;
        const bool isJoined = std::any_of(
            joins.begin(), joins.end(), [&](const CKernelJoin& join) { return formJoin(unit, join, first); });
        if (!isJoined) {
            unit.join = nullptr;
            unit.calls[0] = first;
            unit.callCount = 1;
        }
        for (std::size_t part = 0; part < unit.callCount; ++part) {
            isInUnit_[unit.calls[part]] = true;
        }
    }
}

bool CAudioPlanOrder::formJoin(Unit& unit, const CKernelJoin& join, Index first)
{
    if (join.parts.size() > kMaxParts) {
        return false;
    }
    unit.join = &join;
    unit.calls[0] = first;
    unit.callCount = 1;
    for (std::size_t i = 1; i < join.parts.size(); ++i) {
        const Index call = partFor(unit, join.parts[i]);
        if (call == kNone) {
            return false;
        }
        unit.calls[unit.callCount++] = call;
    }
    return keepsToItself(unit);
}

// The call that can be a part, or kNone.
Index CAudioPlanOrder::partFor(const Unit& unit, const CKernelPart& part) const
{
    const auto fits = [&](Index index, Index input) {
        const Call& call = calls_[index];
        return !call.isLeftOut && call.entry->function == part.function && inputOf(call) == input &&
               !isTaken(unit, index);
    };
    if (part.source != CKernelPart::kInput) {
        const Index value = calls_[unit.calls[static_cast<std::size_t>(part.source)]].after[0];
        const bool isOnlyReader = readers_[value] == 1 && fits(lastReader_[value], value);
        return isOnlyReader ? lastReader_[value] : kNone;
    }
    const Index input = inputOf(calls_[unit.calls[0]]);
    for (std::size_t i = unit.calls[0] + 1U; i < calls_.size(); ++i) {
        if (fits(static_cast<Index>(i), input)) {
            return static_cast<Index>(i);
        }
    }
    return kNone;
}

bool CAudioPlanOrder::isTaken(const Unit& unit, Index call) const
{
    const auto end = unit.calls.begin() + unit.callCount;
    return isInUnit_[call] || std::find(unit.calls.begin(), end, call) != end;
}

namespace {

// The operand that a call takes its signal from.
std::size_t inputOperand(const Call& call)
{
    const std::size_t last = call.operandCount - 1U;
    return call.writes(last) ? 0 : last;
}

} // namespace

Index CAudioPlanOrder::inputOf(const Call& call) const
{
    return call.operandCount == 0 ? kNone : call.before[inputOperand(call)];
}

// Later parts run where the first one stands. So they may read nothing but the signal and states, nobody else
// may touch these, and they overwrite nothing but what they read.
bool CAudioPlanOrder::keepsToItself(const Unit& unit) const
{
    for (std::size_t part = 0; part < unit.callCount; ++part) {
        const Call& call = calls_[unit.calls[part]];
        if (!call.writes(0) || (call.before[0] != kNone && inputOperand(call) != 0)) {
            return false;
        }
        for (std::size_t i = 1; i < call.operandCount; ++i) {
            if (i == inputOperand(call)) {
                continue;
            }
            const Index buffer = call.sources[i];
            std::size_t uses = 0;
            for (std::size_t other = 0; other < unit.callCount; ++other) {
                const Call& each = calls_[unit.calls[other]];
                uses += static_cast<std::size_t>(
                    std::count(each.sources.begin(), each.sources.begin() + each.operandCount, buffer));
            }
            if (buffers_[buffer].kind != EKind::kState || uses != uses_[buffer]) {
                return false;
            }
        }
    }
    return true;
}

// --- order

void CAudioPlanOrder::findDepth(Unit& unit)
{
    Index deepest = 0;
    for (std::size_t part = 0; part < unit.callCount; ++part) {
        const Call& call = calls_[unit.calls[part]];
        for (std::size_t i = 0; i < call.operandCount; ++i) {
            const Index buffer = call.sources[i];
            deepest = std::max(deepest, written_[buffer]);
            deepest = call.writes(i) ? std::max(deepest, read_[buffer]) : deepest;
        }
    }
    unit.depth = static_cast<Index>(deepest + 1);
    for (std::size_t part = 0; part < unit.callCount; ++part) {
        const Call& call = calls_[unit.calls[part]];
        for (std::size_t i = 0; i < call.operandCount; ++i) {
            Index& last = (call.writes(i) ? written_ : read_)[call.sources[i]];
            last = std::max(last, unit.depth);
        }
    }
}

std::size_t CAudioPlanOrder::widest(const Unit& unit) const
{
    const CKernelEntry& entry = *calls_[unit.calls[0]].entry;
    const bool hasQuad = (unit.join ? unit.join->quad : entry.quad) && hasWideLanes();
    const bool hasPair = unit.join ? unit.join->pair : entry.pair;
    return hasQuad ? 4 : hasPair ? 2 : 1;
}

void CAudioPlanOrder::findCompany(Index index)
{
    Unit& unit = units_[index];
    unit.isPlaced = false;
    unit.companion = kNone;
    unit.last = index;
    unit.count = 1;
    for (Index* link = &open_[unit.depth]; *link != kNone; link = &units_[*link].nextOpen) {
        Unit& first = units_[*link];
        if (goTogether(first, unit)) {
            units_[first.last].companion = index;
            first.last = index;
            if (++first.count == widest(first)) {
                *link = first.nextOpen;
            }
            return;
        }
    }
    if (widest(unit) > 1) {
        unit.nextOpen = std::exchange(open_[unit.depth], index);
    }
}

bool CAudioPlanOrder::goTogether(const Unit& a, const Unit& b) const
{
    if (a.join != b.join || a.callCount != b.callCount ||
        calls_[a.calls[0]].entry != calls_[b.calls[0]].entry) {
        return false;
    }
    for (std::size_t part = 0; part < a.callCount; ++part) {
        if (calls_[a.calls[part]].count != calls_[b.calls[part]].count) {
            return false;
        }
    }
    return true;
}

// In front of units that go together come all that the last of them may wait for. The first is always met
// first.
void CAudioPlanOrder::place(Index index)
{
    Unit& unit = units_[index];
    if (unit.isPlaced) {
        return;
    }
    for (Index each = index; each != kNone; each = units_[each].companion) {
        units_[each].isPlaced = true;
    }
    while (firstOpen_ < unitCount_ && units_[firstOpen_].isPlaced) {
        ++firstOpen_;
    }
    for (std::size_t i = firstOpen_; i < unit.last; ++i) {
        if (units_[i].depth < unit.depth) {
            place(static_cast<Index>(i));
        }
    }
    order_[placed_++] = index;
}

} // namespace qel
