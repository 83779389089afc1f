// A snapshot of parameters that can be kept, filed and put back.
#pragma once

#include "CByteBuffer.h"
#include "CError.h"
#include "Streams/CInputStream.h"
#include "Streams/COutputStream.h"

#include <memory>

namespace qel {

class CAudioParamStorage;

// Saved parameters by key, in key order: the name of each relative to the hierarchy of its registry, without
// the dot. A block is what CAudioParam::save() wrote, the path of the definition and a storage record, and is
// only looked into when it is put back; so keys that no parameter uses any more live on in files. The name is
// "<id>:<title>", where the id says to which kind of registry the preset belongs.
//
// A plain value; one thread at a time. Copies share their entries until one of them is changed.
class CAudioPreset
{
public:
    // "aprs": a preset body in a compressed chunk.
    static constexpr std::uint32_t kChunkId = 0x73727061;
    using Entries = CStringMap<CByteBuffer>;

    CAudioPreset() = default;
    explicit CAudioPreset(CString name) : name_(std::move(name)) {}

    const CString& getName() const { return name_; }
    void setName(const CString& name) { name_ = name; }
    static CString makeName(const CString& id, const CString& title) { return id + ":" + title; }
    // What stands before the first colon of the name; empty without one.
    CString getId() const;
    // What stands behind it; the whole name without one.
    CString getTitle() const;

    const Entries& getEntries() const;
    const CByteBuffer* findEntry(const CString& key) const;
    void setEntry(const CString& key, CByteBuffer block) { ownEntries()[key] = std::move(block); }
    void removeEntry(const CString& key);

    // Adds an entry from values, as the parameter declared at `defPath` of the shared tree would save them.
    // For tools that build presets without an instance.
    CError setValues(const CString& key, const CString& defPath, const CAudioParamStorage& values);
    // Reads an entry into `values`, which has the format. A missing key is an error.
    CError readValues(const CString& key, CString& outDefPath, CAudioParamStorage& values) const;

    // Wire form: name; u32 entry count; for each entry key, u32 block size, block. On failure nothing
    // changes. Where a key comes twice the later entry counts.
    CError load(CInputStream& stream);
    CError save(COutputStream& stream) const;

    // A file or resource with one chunk. An existing file is replaced in one step, or stays.
    CError loadFile(const CString& path);
    CError saveFile(const CString& path) const;

    friend bool operator==(const CAudioPreset& a, const CAudioPreset& b);

private:
    Entries& ownEntries();

    CString name_;
    std::shared_ptr<Entries> entries_; // null: none
};

} // namespace qel
