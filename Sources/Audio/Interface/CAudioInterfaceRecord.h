// How records of the audio/UI interface become bytes and back.
#pragma once

#include "CByteBuffer.h"
#include "CError.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <concepts>
#include <vector>

namespace qel {

// A record type lists its fields once, for both directions:
//
//     static constexpr EAudioInterfaceRecord kType = ...;
//     template <class Self, class Io> static CError fields(Self& self, Io& io) { return io(self.a, self.b); }
//
// Fields are numbers, booleans, strings, byte blocks (u32 size, bytes), lists (u32 count, elements) and
// structs with fields of their own. A record is its type number, then the fields; its end is that of its
// buffer.
class CAudioInterfaceWriter
{
public:
    explicit CAudioInterfaceWriter(COutputStream& stream) : stream_(stream) {}

    template <class... Fields>
    CError operator()(const Fields&... values)
    {
        CError error;
        (void)(... && !static_cast<bool>(error = put(values)));
        return error;
    }

private:
    CError put(const CString& value) { return stream_.writeString(value); }
    CError put(bool value) { return stream_.writeBool(value); }
    CError put(std::int32_t value) { return stream_.writeI32(value); }
    CError put(double value) { return stream_.writeF64(value); }
    CError put(const CByteBuffer& value)
    {
        QEL_TRY(stream_.writeU32(static_cast<std::uint32_t>(value.size())), {});
        return stream_.write(value.data(), value.size());
    }
    template <class T>
    CError put(const std::vector<T>& list)
    {
        QEL_TRY(stream_.writeU32(static_cast<std::uint32_t>(list.size())), {});
        for (const T& value : list) {
            QEL_TRY(put(value), {});
        }
        return {};
    }
    template <class T>
    requires std::is_class_v<T> CError put(const T& value) { return T::fields(value, *this); }

    COutputStream& stream_;
};

class CAudioInterfaceReader
{
public:
    explicit CAudioInterfaceReader(CMemoryReader& stream) : stream_(stream) {}

    template <class... Fields>
    CError operator()(Fields&... values)
    {
        CError error;
        (void)(... && !static_cast<bool>(error = get(values)));
        return error;
    }

private:
    CError get(CString& value) { return stream_.readString(value); }
    CError get(bool& value) { return stream_.readBool(value); }
    CError get(std::int32_t& value) { return stream_.readI32(value); }
    CError get(double& value) { return stream_.readF64(value); }
    CError get(CByteBuffer& value);
    // Lists grow as their data arrive, so that a wrong count costs nothing.
    template <class T>
    CError get(std::vector<T>& list)
    {
        std::uint32_t count = 0;
        QEL_TRY(stream_.readU32(count), {});
        list.clear();
        for (std::uint32_t i = 0; i < count; ++i) {
            T value{};
            QEL_TRY(get(value), {});
            list.push_back(std::move(value));
        }
        return {};
    }
    template <class T>
    requires std::is_class_v<T> CError get(T& value) { return T::fields(value, *this); }

    CMemoryReader& stream_;
};

template <class Record>
CByteBuffer encodeRecord(const Record& record)
{
    CMemoryWriteBuffer stream; // cannot fail
    releaseError(stream.writeU32(static_cast<std::uint32_t>(Record::kType)));
    CAudioInterfaceWriter writer(stream);
    releaseError(Record::fields(record, writer));
    CByteBuffer bytes;
    stream.copyTo(bytes);
    return bytes;
}

// The type number of a record.
CError readRecordType(const CByteBuffer& bytes, std::uint32_t& outType);
// Succeeds at the end of the data only.
CError checkRecordEnd(CMemoryReader& reader);

// Reads a whole record of this type. A record that is cut short, goes on behind its end or is of another type
// is an error, and `out` stays as it was.
template <class Record>
CError decodeRecord(const CByteBuffer& bytes, Record& out)
{
    CMemoryReader reader(bytes.bytes());
    std::uint32_t type = 0;
    QEL_TRY(reader.readU32(type), {});
    if (type != static_cast<std::uint32_t>(Record::kType)) {
        QEL_FAIL({}, "@qelstr_CAudioInterface_decodeRecord_InvalidType Invalid data type %1.", type);
    }
    Record record;
    CAudioInterfaceReader fields(reader);
    QEL_TRY(Record::fields(record, fields), {});
    QEL_TRY(checkRecordEnd(reader), {});
    out = std::move(record);
    return {};
}

// The types that one end understands.
template <class... Records>
struct CAudioInterfaceRecordList
{};

// Reads the record, whose type is in its first bytes, and calls `handle` with it. A type that is not in the
// list leaves `outIsKnown` false.
template <class... Records, class Handle>
CError dispatchRecord(CAudioInterfaceRecordList<Records...>, const CByteBuffer& bytes, std::uint32_t& outType,
                      bool& outIsKnown, Handle&& handle)
{
    outIsKnown = false;
    QEL_TRY(readRecordType(bytes, outType), {});
    CError error;
    const auto tryOne = [&]<class Record>(Record record) {
        if (outType != static_cast<std::uint32_t>(Record::kType)) {
            return false;
        }
        error = decodeRecord(bytes, record);
        if (!error) {
            error = handle(record);
        }
        return true;
    };
    outIsKnown = (... || tryOne(Records()));
    return error;
}

} // namespace qel
