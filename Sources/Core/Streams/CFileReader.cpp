// Reader of a file.
#include "Streams/CFileReader.h"

#include "Streams/FileName.h"

namespace qel {

CFileReader::~CFileReader()
{
    releaseError(CFileReader::close());
}

CError CFileReader::open(const CString& path, unsigned flags)
{
    QEL_TRY(close(), {});
    fileName_ = displayFileName(path);
    if (const int code = file_.open(path.toUtf8(), CFile::Access::kRead, flags); code != 0) {
        QEL_FAIL(
            {},
            "@qelstr_CFileReader_open_OpenError Unable to open file '%1' for reading (error %2, flags %3).",
            fileName_, code, flags);
    }
    return {};
}

CError CFileReader::close()
{
    if (!file_.isOpen()) {
        return {};
    }
    if (const int code = file_.close(); code != 0) {
        QEL_FAIL({},
                 "@qelstr_CFileReader_close_CloseError Unable to close file '%1' after reading (error %2).",
                 fileName_, code);
    }
    return {};
}

CError CFileReader::consume(std::size_t count)
{
    std::int64_t position = 0;
    int code = file_.getPosition(position);
    if (code == 0) {
        code = file_.setPosition(position + static_cast<std::int64_t>(count));
    }
    if (code != 0) {
        QEL_FAIL(
            {}, "@qelstr_CFileReader_consume_PosError Unable to set file's '%1' consume position (error %2).",
            fileName_, code);
    }
    return {};
}

CError CFileReader::read(void* buffer, std::size_t count)
{
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    std::size_t done = 0;
    while (done < count) {
        std::size_t part = 0;
        if (const int code = file_.read(bytes + done, count - done, part); code != 0) {
            QEL_FAIL({}, "@qelstr_CFileReader_read_ReadError Unable to read from file '%1' (error %2).",
                     fileName_, code);
        }
        if (part == 0) {
            QEL_FAIL({},
                     "@qelstr_CFileReader_read_ReadBeyondEnd Unable to read from file '%1' (required %2 "
                     "bytes, read "
                     "%3 bytes).",
                     fileName_, count, done);
        }
        done += part;
    }
    return {};
}

CError CFileReader::readStreamed(void* buffer, std::size_t& inOutCount)
{
    const std::size_t wanted = inOutCount;
    inOutCount = 0;
    if (const int code = file_.read(buffer, wanted, inOutCount); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileReader_readStreamed_ReadError Unable to read from file '%1' (error %2).",
                 fileName_, code);
    }
    return {};
}

CError CFileReader::getPosition(std::int64_t& out)
{
    if (const int code = file_.getPosition(out); code != 0) {
        QEL_FAIL(
            {},
            "@qelstr_CFileReader_getPosition_PosError Unable to get file's '%1' reading position (error %2).",
            fileName_, code);
    }
    return {};
}

CError CFileReader::setPosition(std::int64_t position)
{
    if (const int code = file_.setPosition(position); code != 0) {
        QEL_FAIL(
            {},
            "@qelstr_CFileReader_setPosition_PosError Unable to set file's '%1' reading position (error %2).",
            fileName_, code);
    }
    return {};
}

CError CFileReader::getSize(std::int64_t& out)
{
    if (const int code = file_.getSize(out); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileReader_getSize_FileSizeError Unable to get file's '%1' size (error %2).",
                 fileName_, code);
    }
    return {};
}

} // namespace qel
