// A set of values of one parameter: groups of entries of numbers.
#pragma once

#include "CAudioParamChange.h"
#include "CAudioParamData.h"

#include <memory>
#include <span>

namespace qel {

class CAudioParamInfo;

// values[group][entry * esize + element], sparse by group: a group exists from the first write to it, and
// what was never written reads as the fill, which holds the default entries. A string parameter has numbers
// that are identifiers of the storage's own pool.
//
// Belongs to one thread at a time; CAudioParam tells which of its storages belongs to whom. Nearly all hold
// one number of one group, and that lives inside the object. What does not fit the room of a storage makes it
// grow, which allocates; on the audio thread it is handed a larger room first (needsRoom(), exchangeRoom()).
// Groups that go keep their room.
class CAudioParamStorage
{
public:
    // Bounds on what a file or a caller can make it grow to.
    static constexpr std::int32_t kMaxGroups = 64;
    static constexpr std::int32_t kMaxEntries = 4096; // in one group
    static constexpr std::int32_t kUsualGroups = 8;

    static constexpr std::int32_t kFloat = 0;
    static constexpr std::int32_t kString = 1;

    // Where the numbers are: as many of each group, whether it holds them or not.
    class Room
    {
    public:
        Room() = default;
        Room(std::int32_t groups, std::int32_t numbersPerGroup);

        std::int32_t groups() const { return static_cast<std::int32_t>(counts_.size()); }
        std::int32_t numbersPerGroup() const { return stride_; }
        double* values(std::int32_t group) { return numbers_.data() + group * stride_; }
        const double* values(std::int32_t group) const { return numbers_.data() + group * stride_; }
        // Entries held in a group.
        std::uint16_t& count(std::int32_t group) { return counts_[static_cast<std::size_t>(group)]; }
        std::uint16_t count(std::int32_t group) const { return counts_[static_cast<std::size_t>(group)]; }

    private:
        std::int32_t stride_ = 0;
        CInlineArray<double, 1> numbers_;
        CInlineArray<std::uint16_t, 4> counts_;
    };

    CAudioParamStorage() = default;
    CAudioParamStorage(const CAudioParamStorage& other);
    CAudioParamStorage(CAudioParamStorage&& other) noexcept = default;
    CAudioParamStorage& operator=(const CAudioParamStorage& other);
    CAudioParamStorage& operator=(CAudioParamStorage&& other) noexcept = default;

    // Sets the format and drops all values and the fill. `entriesExpected` is the length of the value lists
    // to make room for, in so many groups.
    void format(std::int32_t esize, std::int32_t dtype, std::int32_t reserved = 0,
                std::int32_t entriesExpected = 0, std::int32_t groupsExpected = 1);
    // The format and the fill of `model`, with the room that it has, and that of `groups` at the least.
    void formatLike(const CAudioParamStorage& model, std::int32_t groups = 1);
    // The entries that fill holes: whole entries of esize numbers, identifiers of `pool`.
    void setFill(std::span<const double> values, const CAudioParamData* pool = nullptr);
    // See CAudioParamData; for storages of the audio thread.
    void setRetireList(CAudioParamItemRetireList* list);

    bool isFormatted() const { return isFormatted_; }
    std::int32_t getEsize() const { return esize_; }
    std::int32_t getDtype() const { return dtype_; }
    std::int32_t getReserved() const { return reserved_; }
    bool isString() const { return dtype_ == kString; }
    bool hasFormat(std::int32_t esize, std::int32_t dtype, std::int32_t reserved) const
    {
        return isFormatted_ && esize_ == esize && dtype_ == dtype && reserved_ == reserved;
    }

    std::int32_t getGroupCount() const { return groupCount_; }
    // Entries held in a group; 0 for a group that does not exist.
    std::int32_t getCount(std::int32_t group) const;
    // The numbers of a group, getCount() * esize of them.
    std::span<const double> getValues(std::int32_t group) const;
    std::span<const double> getFill() const { return {fill_.data(), fill_.size()}; }
    std::int32_t getFillCount() const { return static_cast<std::int32_t>(fill_.size()) / esize_; }
    // Empty for numbers.
    const CAudioParamData& getPool() const;
    const CAudioParamData& getFillPool() const;

    // --- reading, on any side: no locks, no allocation

    // The value a module sees: the stored one; for an entry that is not stored the fill entry at the same
    // index, or the first fill entry if the fill is shorter. 0 without a fill.
    double get(std::int32_t group, std::int32_t entry, std::int32_t element = 0) const;
    // The value a bypass state sees, which falls back by group instead: the stored one, else the fill entry
    // at index `group`, else the first.
    double getForState(std::int32_t group, std::int32_t entry, std::int32_t element = 0) const;
    // The text at an entry, with the fall-back of get().
    const CString& getString(std::int32_t group, std::int32_t entry) const;

    // --- writing

    // True if a change has this storage's format and lies within the bounds.
    bool accepts(const CAudioParamChange& change) const;
    // Carries a change out. The group list grows to the group with empty groups; entries between the end of
    // the group and the first written one are filled. Strings move over into the own pool, what they replace
    // leaves it. A change of another format or outside the bounds is ignored and gives false.
    bool write(const CAudioParamChange& change);
    // Formats it for a declaration and fills it with the defaults, within their range: what a parameter
    // begins with, and what a slot that belongs to no parameter holds for good.
    void fillWithDefaults(const CAudioParamInfo& info);
    // Whether write() would have to grow for the change, which it accepts.
    bool needsRoom(const CAudioParamChange& change) const;
    // As large as the own one at the least, and with place for this group.
    Room roomFor(std::int32_t group, std::int32_t numbersPerGroup) const;
    const Room& getRoom() const { return room_; }
    // How many groups are made room for where this one is the first that finds none.
    static std::int32_t groupsOfRoom(std::int32_t group);
    // Moves into a room, unless the own one is larger, and leaves the old one in its place. Touches no heap.
    void exchangeRoom(Room& room);
    // Exchanges all but the retire lists, which belong to the place.
    void exchange(CAudioParamStorage& other);
    // Drops all groups and their strings.
    void clear();
    // Takes over groups and strings of `source`, which has the same format. Format and fill stay.
    void copyValues(const CAudioParamStorage& source);
    // Limits each number to the range of its element, given by esize minima and maxima, of which the
    // smaller is the lower limit. What is not a number becomes the default that the fill gives; identifiers
    // stay.
    void clamp(std::span<const double> minimum, std::span<const double> maximum);

    // --- wire form

    // Reads a record of this storage's format into it. On failure the values stay as they were.
    CError load(CInputStream& stream);
    // Writes all groups, or with `group` >= 0 that group alone, as the record's group 0.
    CError save(COutputStream& stream, std::int32_t group = -1) const;

private:
    // Of a string parameter. Two pools, since one goes when the groups go.
    struct Strings
    {
        CAudioParamData values;
        CAudioParamData fill;
    };

    bool writeAny(const CAudioParamChange& change);
    double fallback(std::int32_t fillEntry, std::int32_t element) const;
    bool isStored(std::int32_t group, std::int32_t entry) const
    {
        return entry >= 0 && entry < getCount(group);
    }
    std::int32_t offset(std::int32_t entry) const { return entry * esize_; }
    void growRoom(std::int32_t groups, std::int32_t entries);
    void growGroups(std::int32_t count);
    void resizeGroup(std::int32_t group, std::int32_t entries);
    void fillEntries(std::int32_t group, std::int32_t from, std::int32_t to);
    CError loadHead(CInputStream& stream, std::int32_t& outGroups) const;
    CError loadGroup(CInputStream& stream, std::int32_t group);
    // Gives every entry a string of its own, so that replacing one entry cannot take another's text away.
    void separateSharedIds();

    std::int32_t esize_ = 1;
    std::int32_t dtype_ = kFloat;
    std::int32_t reserved_ = 0;
    bool isFormatted_ = false;
    std::int32_t groupCount_ = 0;
    Room room_;
    CInlineArray<double, 1> fill_;
    std::unique_ptr<Strings> strings_; // null for numbers
    CAudioParamItemRetireList* retired_ = nullptr;
};

} // namespace qel
