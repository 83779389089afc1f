// An ordered set of presets under one name.
#include "CAudioPresetBank.h"

#include "PresetBankFile.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

namespace qel {

namespace {

constexpr std::int32_t kListVersion = 1;

} // namespace

void CAudioPresetBank::insert(std::int32_t index, CAudioPreset preset)
{
    presets_.insert(hasIndex(index) ? presets_.begin() + index : presets_.end(), std::move(preset));
}

void CAudioPresetBank::remove(std::int32_t index)
{
    if (hasIndex(index)) {
        presets_.erase(presets_.begin() + index);
    }
}

CError CAudioPresetBank::load(CInputStream& stream)
{
    CAudioPresetBank loaded;
    QEL_TRY(stream.readString(loaded.name_), {});
    std::int32_t count = 0;
    QEL_TRY(stream.readI32(count), loaded.name_);
    if (count < 0) {
        QEL_FAIL(loaded.name_, "@qelstr_CAudioPresetBank_load_CountError Invalid preset count %1.", count);
    }
    // A preset takes 8 bytes or more, so a false count ends at the end of the stream.
    for (std::int32_t i = 0; i < count; ++i) {
        CAudioPreset preset;
        QEL_TRY(preset.load(stream), loaded.name_);
        loaded.add(std::move(preset));
    }
    *this = std::move(loaded);
    return {};
}

CError CAudioPresetBank::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeString(name_), name_);
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(presets_.size())), name_);
    for (const CAudioPreset& preset : presets_) {
        QEL_TRY(preset.save(stream), name_);
    }
    return {};
}

CError CAudioPresetBank::loadList(CInputStream& stream)
{
    std::int32_t version = 0;
    QEL_TRY(stream.readI32(version), {});
    if (version != kListVersion) {
        QEL_FAIL({}, "@qelstr_CAudioPresetBank_loadList_VersionError Unsupported preset list version %1.",
                 version);
    }
    QEL_TRY(load(stream), {});
    return {};
}

CError CAudioPresetBank::saveList(COutputStream& stream) const
{
    QEL_TRY(stream.writeI32(kListVersion), name_);
    QEL_TRY(save(stream), name_);
    return {};
}

CError CAudioPresetBank::loadFile(const CString& path)
{
    CByteBuffer body;
    QEL_TRY(readChunkFile(path, kChunkId, body), path);
    CMemoryReader reader(body.bytes());
    QEL_TRY(load(reader), path);
    return {};
}

CError CAudioPresetBank::saveFile(const CString& path) const
{
    CMemoryWriteBuffer body;
    QEL_TRY(save(body), path);
    QEL_TRY(writeChunkFile(path, kChunkId, body), path);
    return {};
}

} // namespace qel
