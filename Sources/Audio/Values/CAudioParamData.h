// The pool behind the identifiers in a string parameter.
#pragma once

#include "CAudioParamDataItem.h"
#include "CInlineArray.h"
#include "CString.h"

namespace qel {

// Maps 32-bit identifiers to items. An identifier is a 1 or more, is handed out in rising order and never
// twice in a pool's life; 0 stands for nothing. Copying a pool shares its items under the same identifiers.
//
// A pool belongs to one thread at a time. On the audio thread copyItem(), remove() and clear() touch no heap
// once reserve() has made room and a retire list is set. Every other call that adds is for control threads.
class CAudioParamData
{
public:
    CAudioParamData() = default;
    CAudioParamData(const CAudioParamData& other);
    CAudioParamData(CAudioParamData&& other) noexcept;
    CAudioParamData& operator=(const CAudioParamData& other);
    CAudioParamData& operator=(CAudioParamData&& other) noexcept;
    ~CAudioParamData() { clear(); }

    // Inserts a new string item and returns its identifier.
    std::uint32_t addString(const CString& text);
    // The text, or the empty string for an unknown identifier or an item that is no string.
    const CString& getString(std::uint32_t id) const;
    // The same for an identifier as it travels among the values of a parameter.
    const CString& getString(double id) const { return getString(toId(id)); }
    void remove(std::uint32_t id);
    // Takes the item of another pool over under a fresh identifier, or returns 0 if it has none. The item
    // itself is shared.
    std::uint32_t copyItem(std::uint32_t id, const CAudioParamData& source);
    // Drops all items. Identifiers go on rising.
    void clear();

    std::size_t size() const { return entries_.size(); }
    bool contains(std::uint32_t id) const { return find(id) != nullptr; }
    void reserve(std::size_t items) { entries_.reserve(items); }
    // Where items go that this pool was the last to hold; null, the default, destroys them on the spot. The
    // list must outlive the pool. Does not travel with copies.
    void setRetireList(CAudioParamItemRetireList* list) { retired_ = list; }

    // Wire form: u32 entry count; for each entry u32 identifier, u32 item type, the item; more of them than a
    // parameter can have entries are refused. On failure the pool stays as it was.
    CError load(CInputStream& stream);
    CError save(COutputStream& stream) const;

    // The identifier a value stands for: 0 for what cannot be one, NaN included.
    static std::uint32_t toId(double value)
    {
        return value >= 1.0 && value <= 4294967295.0 ? static_cast<std::uint32_t>(value) : 0;
    }

private:
    struct Entry
    {
        std::uint32_t id;
        CAudioParamDataItem* item; // one reference is this entry's
    };

    std::size_t position(std::uint32_t id) const;
    const Entry* find(std::uint32_t id) const;
    // Puts an item whose reference the caller gives away under `id`, which may be taken already.
    void put(std::uint32_t id, CAudioParamDataItem* item);
    void sort();
    std::uint32_t takeId();

    CInlineArray<Entry, 1> entries_; // by rising identifier
    std::uint32_t lastId_ = 0;
    CAudioParamItemRetireList* retired_ = nullptr;
};

} // namespace qel
