// Abstract writer of bytes, and the wire primitives that every file format here is made of.
#include "Streams/COutputStream.h"

#include "Streams/CInputStream.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/COutputZipStream.h"

#include <zlib.h>

#include <limits>

namespace qel {

namespace {

constexpr std::size_t kMaxWireSize = std::numeric_limits<std::uint32_t>::max();

} // namespace

CError COutputStream::writeString(const CString& string)
{
    const std::string bytes = string.toUtf8();
    // What could not be read again is not written.
    if (bytes.size() > CInputStream::kMaxStringBytes) {
        QEL_FAIL({}, "@qelstr_COutputStream_writeString_TooLong String length %1 too long in writeString().",
                 bytes.size());
    }
    QEL_TRY(writeU32(static_cast<std::uint32_t>(bytes.size())), {});
    QEL_TRY(write(bytes.data(), bytes.size()), {});
    return {};
}

CError COutputStream::writeCompressedData(const CByteBuffer& buffer, std::uint32_t id)
{
    if (buffer.size() > kMaxWireSize) {
        QEL_FAIL({},
                 "@qelstr_COutputStream_writeCompressedData_TooLong Data size %1 too large for a compressed "
                 "chunk.",
                 buffer.size());
    }
    QEL_TRY(writeU32(id), {});
    CMemoryWriteBuffer head;
    QEL_TRY(head.writeU32(static_cast<std::uint32_t>(buffer.size())), {});
    QEL_TRY(head.writeTo(*this), {});
    QEL_TRY(writeU32(head.getAdler()), {});

    COutputZipStream zip;
    QEL_TRY(zip.open(*this, Z_DEFAULT_COMPRESSION), {});
    QEL_TRY(zip.write(buffer.data(), buffer.size()), {});
    QEL_TRY(zip.close(), {});
    return {};
}

} // namespace qel
