// Files of presets, of any of their three kinds.
#include "PresetCompiler/PresetFile.h"

#include "PresetBankFile.h"
#include "Streams/CFileReader.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "TreeCompiler/ToolError.h"

namespace qel::tools {

namespace {

using Kind = CPresetFile::Kind;

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

std::uint32_t idOf(Kind kind)
{
    switch (kind) {
    case Kind::kBank:
        return CAudioPresetBank::kChunkId;
    case Kind::kList:
        return CAudioPresetBank::kListChunkId;
    default:
        return CAudioPreset::kChunkId;
    }
}

CError saveBody(const CPresetFile& file, COutputStream& stream)
{
    switch (file.kind) {
    case Kind::kBank:
        return file.presets.save(stream);
    case Kind::kList:
        return file.presets.saveList(stream);
    default:
        return file.presets.get(0).save(stream);
    }
}

CError loadBody(CPresetFile& file, CInputStream& stream)
{
    switch (file.kind) {
    case Kind::kBank:
        return file.presets.load(stream);
    case Kind::kList:
        return file.presets.loadList(stream);
    default:
        file.presets.add(CAudioPreset());
        return file.presets.get(0).load(stream);
    }
}

} // namespace

std::vector<std::uint8_t> encodePresets(const CPresetFile& file)
{
    CMemoryWriteBuffer body;
    require(saveBody(file, body));
    CByteBuffer bytes;
    body.copyTo(bytes);
    return {bytes.bytes().begin(), bytes.bytes().end()};
}

CPresetFile readPresetFile(const std::string& path)
{
    CFileReader reader;
    std::uint32_t id = 0;
    require(reader.open(CString::fromUtf8(path), 0));
    require(reader.readU32(id));
    for (const Kind kind : {Kind::kBank, Kind::kList, Kind::kPreset}) {
        if (id == idOf(kind)) {
            CByteBuffer body;
            require(reader.setPosition(0));
            require(reader.readCompressedData(body, id));
            CMemoryReader bodyReader(body.bytes());
            CPresetFile file{kind, {}};
            require(loadBody(file, bodyReader));
            return file;
        }
    }
    throw CToolError(path + ": neither a bank nor a list nor a preset");
}

void writePresetFile(const CPresetFile& file, const std::string& path)
{
    CMemoryWriteBuffer body;
    require(saveBody(file, body));
    require(writeChunkFile(CString::fromUtf8(path), idOf(file.kind), body));
}

} // namespace qel::tools
