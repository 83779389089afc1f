// The programs of an instance, and A and B.
#pragma once

#include "CAudioParamUndo.h"
#include "CAudioPresetBank.h"

#include <memory>
#include <optional>
#include <vector>

namespace qel {

// Which presets the session bank holds, which of them is current, what belongs to each of them, and the slots
// A and B. A program has an undo history of its own: that of the current one is in the undo store, the others
// wait here. Knows nothing of parameters: the registry that owns this takes the snapshots and applies what
// becomes current.
//
// There is always at least one program. Guarded by the registry's bank lock; what exchanges histories needs
// the undo store's lock, too.
class CAudioParamPrograms
{
public:
    static constexpr const char* kDefaultTitle = "Default";

    // `id` stands before the colon of every name. `undo` may be null: then there are no histories.
    void setUp(const CString& id, CAudioParamUndo* undo);

    // --- the bank

    const CAudioPresetBank& getBank() const { return bank_; }
    std::int32_t getCount() const { return bank_.getCount(); }
    bool hasIndex(std::int32_t index) const { return bank_.hasIndex(index); }
    std::int32_t getIndex() const { return index_; }
    // `index` must be there.
    CAudioPreset& get(std::int32_t index) { return bank_.get(index); }
    CAudioPreset& getCurrent() { return bank_.get(index_); }

    // Replaces all programs and drops all histories and both slots. The index stays if it is there, or is 0.
    void replaceAll(const CAudioPresetBank& bank);
    // What replaceAll() would make current.
    CAudioPreset currentOf(const CAudioPresetBank& bank) const;
    // Another program becomes the current one, with its history.
    void goTo(std::int32_t index);

    // The current program stays the current one in all of these, with its history.
    // In front of the one at `index`; at the end if there is none.
    void insert(std::int32_t index, CAudioPreset preset);
    // Not the current one.
    void remove(std::int32_t index);
    // Another content, and so an empty history. Not the current one.
    void replace(std::int32_t index, CAudioPreset preset);
    // The program at `from` comes to stand at `to`.
    void move(std::int32_t from, std::int32_t to);

    // --- A and B

    // Whether B is active.
    bool isB() const { return isB_; }
    // Keeps the preset, with a copy of the present history, in the slot that is not active.
    void storeOther(CAudioPreset present);
    // What is in the slot that is not active; null before its first use.
    const CAudioPreset* getOther() const { return other_ ? &other_->preset : nullptr; }
    // Exchanges both; `present` is what was to be heard so far.
    void swapWithOther(CAudioPreset present);

private:
    using HistoryPtr = std::unique_ptr<CAudioParamUndoHistory>;
    struct Slot
    {
        CAudioPreset preset;
        HistoryPtr history;
    };

    HistoryPtr swapHistory(HistoryPtr history);
    HistoryPtr& historyOf(std::int32_t index) { return histories_[static_cast<std::size_t>(index)]; }

    CString id_;
    CAudioParamUndo* undo_ = nullptr;
    CAudioPresetBank bank_;
    std::int32_t index_ = 0;
    std::vector<HistoryPtr> histories_; // the place of the current one is empty
    std::optional<Slot> other_;
    bool isB_ = false;
};

} // namespace qel
