// Files of one compressed chunk, for presets and banks.
#include "PresetBankFile.h"

#include "FileSystem.h"
#include "Streams/CFileWriter.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/CResourceReader.h"
#include "ThreadId.h"

namespace qel {

namespace {

// Beside the target, so that it can be renamed over it; no two writers share one.
CString temporaryName(const CString& path)
{
    return path + "." + CString::number(static_cast<std::int64_t>(platform::processId())) + "-" +
           CString::number(static_cast<std::int64_t>(platform::currentThreadId())) + ".tmp";
}

CError writeNewFile(const CString& path, std::uint32_t id, const CMemoryWriteBuffer& body)
{
    CByteBuffer bytes;
    body.copyTo(bytes);
    CFileWriter writer;
    QEL_TRY(writer.open(path, 0, false), {});
    QEL_TRY(writer.writeCompressedData(bytes, id), {});
    QEL_TRY(writer.flush(), {});
    QEL_TRY(writer.close(), {});
    return {};
}

} // namespace

CError readChunkFile(const CString& path, std::uint32_t id, CByteBuffer& outBody)
{
    CResourceReader reader;
    QEL_TRY(reader.open(path), {});
    QEL_TRY(reader.readCompressedData(outBody, id), path);
    return {};
}

CError writeChunkFile(const CString& path, std::uint32_t id, const CMemoryWriteBuffer& body)
{
    const CString temporary = temporaryName(path);
    if (CError error = writeNewFile(temporary, id, body)) {
        (void)platform::removeFile(temporary.toUtf8());
        return reportError(std::move(error), __FILE__, __LINE__, path);
    }
    if (const int code = platform::renameFile(temporary.toUtf8(), path.toUtf8())) {
        (void)platform::removeFile(temporary.toUtf8());
        QEL_FAIL(path, "@qelstr_CAudioPreset_saveFile_RenameError Unable to replace file '%1' (error %2).",
                 path, code);
    }
    return {};
}

} // namespace qel
