// How records of the audio/UI interface become bytes and back.
#include "CAudioInterfaceRecord.h"

namespace qel {

namespace {

CError bytesLeft(CMemoryReader& reader, std::int64_t& out)
{
    std::int64_t size = 0;
    std::int64_t position = 0;
    QEL_TRY(reader.getSize(size), {});
    QEL_TRY(reader.getPosition(position), {});
    out = size - position;
    return {};
}

} // namespace

CError CAudioInterfaceReader::get(CByteBuffer& value)
{
    std::uint32_t size = 0;
    std::int64_t left = 0;
    QEL_TRY(stream_.readU32(size), {});
    QEL_TRY(bytesLeft(stream_, left), {});
    if (static_cast<std::int64_t>(size) > left) {
        QEL_TRY(stream_.consume(size), {}); // words the error
    }
    value.allocate(size);
    return stream_.read(value.data(), size);
}

CError readRecordType(const CByteBuffer& bytes, std::uint32_t& outType)
{
    CMemoryReader reader(bytes.bytes());
    return reader.readU32(outType);
}

CError checkRecordEnd(CMemoryReader& reader)
{
    std::int64_t left = 0;
    QEL_TRY(bytesLeft(reader, left), {});
    if (left != 0) {
        QEL_FAIL({}, "@qelstr_CAudioInterface_decodeRecord_TrailingData %1 bytes behind the end of a record.",
                 left);
    }
    return {};
}

} // namespace qel
