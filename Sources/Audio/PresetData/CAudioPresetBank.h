// An ordered set of presets under one name.
#pragma once

#include "CAudioPreset.h"

#include <vector>

namespace qel {

// The factory presets, the programs of an instance, or a user's list in the application-data stores. A plain
// value that owns its presets; one thread at a time. Loading replaces everything, or on failure nothing.
class CAudioPresetBank
{
public:
    // "abnk": a bank body in a compressed chunk; "alst": a list body.
    static constexpr std::uint32_t kChunkId = 0x6B6E6261;
    static constexpr std::uint32_t kListChunkId = 0x74736C61;

    const CString& getName() const { return name_; }
    void setName(const CString& name) { name_ = name; }

    std::int32_t getCount() const { return static_cast<std::int32_t>(presets_.size()); }
    bool isEmpty() const { return presets_.empty(); }
    bool hasIndex(std::int32_t index) const { return index >= 0 && index < getCount(); }
    // `index` must be there.
    CAudioPreset& get(std::int32_t index) { return presets_[static_cast<std::size_t>(index)]; }
    const CAudioPreset& get(std::int32_t index) const { return presets_[static_cast<std::size_t>(index)]; }
    void add(CAudioPreset preset) { presets_.push_back(std::move(preset)); }
    // Before the preset at `index`; at the end for an index that is not there.
    void insert(std::int32_t index, CAudioPreset preset);
    void remove(std::int32_t index);
    void clear() { presets_.clear(); }
    // Replaces name and presets by copies.
    void copyFrom(const CAudioPresetBank& other) { *this = other; }
    // Replaces the presets and keeps the name.
    void takePresetsFrom(CAudioPresetBank& other) { presets_.swap(other.presets_); }

    // Wire form of a bank: name; u32 preset count; the preset bodies.
    CError load(CInputStream& stream);
    CError save(COutputStream& stream) const;
    // Wire form of a list: u32 version 1, then as above.
    CError loadList(CInputStream& stream);
    CError saveList(COutputStream& stream) const;

    // A file or resource with one bank chunk. An existing file is replaced in one step, or stays.
    CError loadFile(const CString& path);
    CError saveFile(const CString& path) const;

    friend bool operator==(const CAudioPresetBank& a, const CAudioPresetBank& b) = default;

private:
    CString name_;
    std::vector<CAudioPreset> presets_;
};

} // namespace qel
