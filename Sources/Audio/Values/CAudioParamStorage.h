// A set of values of one parameter: groups of entries of numbers.
#pragma once

#include "CAudioParamChange.h"
#include "CAudioParamData.h"

#include <span>

namespace qel {

class CAudioParamInfo;

// values[group][entry * esize + element], sparse by group: a group exists from the first write to it, and
// what was never written reads as the fill, which holds the default entries. A string parameter has numbers
// that are identifiers of the storage's own pool.
//
// Belongs to one thread at a time; CAudioParam tells which of its storages belongs to whom. Once formatted
// with room for the longest list that will come, write() and clear() touch no heap: groups that go keep their
// memory, up to 8 groups and 4 numbers a group live inside the object. A list longer than any before it
// allocates once.
class CAudioParamStorage
{
public:
    // Bounds on what a file or a caller can make it grow to.
    static constexpr std::int32_t kMaxGroups = 64;
    static constexpr std::int32_t kMaxEntries = 4096; // in one group
    static constexpr std::size_t kInlineGroups = 8;

    static constexpr std::int32_t kFloat = 0;
    static constexpr std::int32_t kString = 1;

    CAudioParamStorage() = default;

    // Sets the format and drops all values and the fill. `entriesExpected` is the length of the value lists
    // to make room for, in all of the first 8 groups.
    void format(std::int32_t esize, std::int32_t dtype, std::int32_t reserved = 0,
                std::int32_t entriesExpected = 0);
    // The format and the fill of `model`, with room for lists as long as its own.
    void formatLike(const CAudioParamStorage& model);
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
    const CAudioParamData& getPool() const { return pool_; }
    const CAudioParamData& getFillPool() const { return fillPool_; }

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
    // Drops all groups and their strings.
    void clear();
    // Takes over groups and strings of `source`, which has the same format. Format and fill stay.
    void copyValues(const CAudioParamStorage& source);
    // Limits each number to the range of its element, given by esize minima and maxima, of which the
    // smaller is the lower limit. NaN stays, identifiers stay.
    // What is not a number becomes the default that the fill gives.
    void clamp(std::span<const double> minimum, std::span<const double> maximum);

    // --- wire form

    // Reads a record of this storage's format into it. On failure the values stay as they were.
    CError load(CInputStream& stream);
    // Writes all groups, or with `group` >= 0 that group alone, as the record's group 0.
    CError save(COutputStream& stream, std::int32_t group = -1) const;

private:
    using Values = CInlineArray<double, 4>;

    double fallback(std::int32_t fillEntry, std::int32_t element) const;
    bool isStored(std::int32_t group, std::int32_t entry) const
    {
        return entry >= 0 && entry < getCount(group);
    }
    std::size_t offset(std::int32_t entry) const
    {
        return static_cast<std::size_t>(entry) * static_cast<std::size_t>(esize_);
    }
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
    CAudioParamData pool_;
    CAudioParamData fillPool_;                   // apart, since pool_ goes when the groups go
    CInlineArray<Values, kInlineGroups> groups_; // never gets shorter, so that memory stays
    CInlineArray<std::int32_t, kInlineGroups> counts_;
    std::int32_t groupCount_ = 0;
    CInlineArray<double, 4> fill_;
};

} // namespace qel
