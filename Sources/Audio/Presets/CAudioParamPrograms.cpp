// The programs of an instance, and A and B.
#include "CAudioParamPrograms.h"

#include <utility>

namespace qel {

void CAudioParamPrograms::setUp(const CString& id, CAudioParamUndo* undo)
{
    id_ = id;
    undo_ = undo;
    bank_.setName("Session Bank");
    replaceAll({});
}

CAudioParamPrograms::HistoryPtr CAudioParamPrograms::swapHistory(HistoryPtr history)
{
    return undo_ ? undo_->swapHistory(std::move(history)) : nullptr;
}

void CAudioParamPrograms::replaceAll(const CAudioPresetBank& bank)
{
    CAudioPresetBank taken = bank;
    bank_.takePresetsFrom(taken);
    if (bank_.isEmpty()) {
        bank_.add(CAudioPreset(CAudioPreset::makeName(id_, kDefaultTitle)));
    }
    if (!bank_.hasIndex(index_)) {
        index_ = 0;
    }
    histories_.clear();
    histories_.resize(static_cast<std::size_t>(bank_.getCount()));
    swapHistory(nullptr);
    other_.reset();
    isB_ = false;
}

CAudioPreset CAudioParamPrograms::currentOf(const CAudioPresetBank& bank) const
{
    if (bank.isEmpty()) {
        return CAudioPreset(CAudioPreset::makeName(id_, kDefaultTitle));
    }
    return bank.get(bank.hasIndex(index_) ? index_ : 0);
}

void CAudioParamPrograms::goTo(std::int32_t index)
{
    HistoryPtr present = swapHistory(std::move(historyOf(index)));
    historyOf(index_) = std::move(present);
    index_ = index;
}

void CAudioParamPrograms::insert(std::int32_t index, CAudioPreset preset)
{
    const std::int32_t place = bank_.hasIndex(index) ? index : bank_.getCount();
    bank_.insert(place, std::move(preset));
    histories_.insert(histories_.begin() + place, nullptr);
    index_ += place <= index_ ? 1 : 0;
}

void CAudioParamPrograms::remove(std::int32_t index)
{
    bank_.remove(index);
    histories_.erase(histories_.begin() + index);
    index_ -= index < index_ ? 1 : 0;
}

void CAudioParamPrograms::replace(std::int32_t index, CAudioPreset preset)
{
    bank_.get(index) = std::move(preset);
    historyOf(index).reset();
}

void CAudioParamPrograms::move(std::int32_t from, std::int32_t to)
{
    CAudioPreset preset = std::move(bank_.get(from));
    bank_.remove(from);
    bank_.insert(to, std::move(preset));
    HistoryPtr history = std::move(historyOf(from));
    histories_.erase(histories_.begin() + from);
    histories_.insert(histories_.begin() + to, std::move(history));
    if (index_ == from) {
        index_ = to;
    } else {
        index_ += (to <= index_ && index_ < from ? 1 : 0) - (from < index_ && index_ <= to ? 1 : 0);
    }
}

void CAudioParamPrograms::storeOther(CAudioPreset present)
{
    other_ = Slot{std::move(present), undo_ ? undo_->copyHistory() : nullptr};
}

void CAudioParamPrograms::swapWithOther(CAudioPreset present)
{
    HistoryPtr history = other_ ? std::move(other_->history) : nullptr;
    other_ = Slot{std::move(present), swapHistory(std::move(history))};
    isB_ = !isB_;
}

} // namespace qel
