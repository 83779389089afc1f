// Saved parameters, read without their declarations.
#include "Inspect/PresetRecord.h"

#include "Streams/CMemoryReader.h"
#include "TreeCompiler/ToolError.h"

namespace qel::tools {

namespace {

// Entries hold at most this many numbers: no parameter has more, and a false format costs nothing.
constexpr std::int32_t kMaxElements = 64;

CError read(CMemoryReader& reader, CPresetRecord& record)
{
    QEL_TRY(reader.readString(record.definition), {});
    std::int64_t start = 0;
    QEL_TRY(reader.getPosition(start), {});
    std::int32_t version = 0;
    std::int32_t esize = 0;
    std::int32_t dtype = 0;
    QEL_TRY(reader.readI32(version), record.definition);
    QEL_TRY(reader.readI32(esize), record.definition);
    QEL_TRY(reader.readI32(dtype), record.definition);
    if (esize < 1 || esize > kMaxElements || dtype < CAudioParamStorage::kFloat ||
        dtype > CAudioParamStorage::kString) {
        QEL_FAIL(record.definition, "Unknown storage format (esize=%1, dtype=%2).", esize, dtype);
    }
    QEL_TRY(reader.setPosition(start), record.definition);
    record.values.format(esize, dtype);
    QEL_TRY(record.values.load(reader), record.definition);
    return {};
}

} // namespace

CPresetRecord readPresetRecord(const CByteBuffer& block)
{
    CMemoryReader reader(block.bytes());
    CPresetRecord record;
    if (const CError error = read(reader, record)) {
        throw CToolError(error.text());
    }
    return record;
}

} // namespace qel::tools
