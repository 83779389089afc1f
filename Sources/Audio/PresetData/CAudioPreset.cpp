// A snapshot of parameters that can be kept, filed and put back.
#include "CAudioPreset.h"

#include "CAudioParamStorage.h"
#include "PresetBankFile.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qel {

namespace {

// A block is taken in pieces of this size, so that a false size costs no more than the data that are there.
constexpr std::size_t kPieceBytes = 4096;

CError readBlock(CInputStream& stream, CByteBuffer& outBlock)
{
    std::int32_t size = 0;
    QEL_TRY(stream.readI32(size), {});
    if (size < 0) {
        QEL_FAIL({}, "@qelstr_CAudioPreset_load_BlockSizeError Invalid preset entry size %1.", size);
    }
    std::vector<std::uint8_t> bytes;
    std::size_t rest = static_cast<std::size_t>(size);
    while (rest > 0) {
        const std::size_t piece = std::min(rest, kPieceBytes);
        bytes.resize(bytes.size() + piece);
        QEL_TRY(stream.read(bytes.data() + bytes.size() - piece, piece), {});
        rest -= piece;
    }
    outBlock.assign(bytes);
    return {};
}

} // namespace

CString CAudioPreset::getId() const
{
    const std::size_t colon = name_.find(u':');
    return colon == CString::kNone ? CString() : name_.substring(0, colon);
}

CString CAudioPreset::getTitle() const
{
    const std::size_t colon = name_.find(u':');
    return colon == CString::kNone ? name_ : name_.substring(colon + 1);
}

const CByteBuffer* CAudioPreset::findEntry(const CString& key) const
{
    const Entries& entries = getEntries();
    const auto found = entries.find(key);
    return found == entries.end() ? nullptr : &found->second;
}

const CAudioPreset::Entries& CAudioPreset::getEntries() const
{
    static const Entries kNone;
    return entries_ ? *entries_ : kNone;
}

CAudioPreset::Entries& CAudioPreset::ownEntries()
{
    if (!entries_ || entries_.use_count() > 1) {
        entries_ = std::make_shared<Entries>(getEntries());
    }
    return *entries_;
}

void CAudioPreset::removeEntry(const CString& key)
{
    if (findEntry(key)) {
        ownEntries().erase(key);
    }
}

bool operator==(const CAudioPreset& a, const CAudioPreset& b)
{
    return a.name_ == b.name_ && (a.entries_ == b.entries_ || a.getEntries() == b.getEntries());
}

CError CAudioPreset::setValues(const CString& key, const CString& defPath, const CAudioParamStorage& values)
{
    CMemoryWriteBuffer buffer;
    QEL_TRY(buffer.writeString(defPath), key);
    QEL_TRY(values.save(buffer), key);
    buffer.copyTo(ownEntries()[key]);
    return {};
}

CError CAudioPreset::readValues(const CString& key, CString& outDefPath, CAudioParamStorage& values) const
{
    const CByteBuffer* block = findEntry(key);
    if (!block) {
        QEL_FAIL(name_, "@qelstr_CAudioPreset_readValues_NoEntry No preset entry '%1'.", key);
    }
    CMemoryReader reader(block->bytes());
    QEL_TRY(reader.readString(outDefPath), key);
    QEL_TRY(values.load(reader), key);
    return {};
}

CError CAudioPreset::load(CInputStream& stream)
{
    CAudioPreset loaded;
    QEL_TRY(stream.readString(loaded.name_), {});
    std::int32_t count = 0;
    QEL_TRY(stream.readI32(count), loaded.name_);
    if (count < 0) {
        QEL_FAIL(loaded.name_, "@qelstr_CAudioPreset_load_CountError Invalid preset entry count %1.", count);
    }
    // An entry takes 8 bytes or more, so a false count ends at the end of the stream.
    for (std::int32_t i = 0; i < count; ++i) {
        CString key;
        QEL_TRY(stream.readString(key), loaded.name_);
        CByteBuffer block;
        QEL_TRY(readBlock(stream, block), loaded.name_);
        loaded.setEntry(key, std::move(block));
    }
    *this = std::move(loaded);
    return {};
}

CError CAudioPreset::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeString(name_), name_);
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(getEntries().size())), name_);
    for (const auto& [key, block] : getEntries()) {
        QEL_TRY(stream.writeString(key), name_);
        QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(block.size())), name_);
        QEL_TRY(stream.write(block.data(), block.size()), name_);
    }
    return {};
}

CError CAudioPreset::loadFile(const CString& path)
{
    CByteBuffer body;
    QEL_TRY(readChunkFile(path, kChunkId, body), path);
    CMemoryReader reader(body.bytes());
    QEL_TRY(load(reader), path);
    return {};
}

CError CAudioPreset::saveFile(const CString& path) const
{
    CMemoryWriteBuffer body;
    QEL_TRY(save(body), path);
    QEL_TRY(writeChunkFile(path, kChunkId, body), path);
    return {};
}

} // namespace qel
