// Writer of a file.
#include "Streams/CFileWriter.h"

#include "Streams/FileName.h"

namespace qel {

CFileWriter::~CFileWriter()
{
    releaseError(close());
}

CError CFileWriter::open(const CString& path, unsigned flags, bool append)
{
    QEL_TRY(close(), {});
    fileName_ = displayFileName(path);
    const CFile::Access access = append ? CFile::Access::kAppend : CFile::Access::kRewrite;
    if (const int code = file_.open(path.toUtf8(), access, flags); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileWriter_open_Error Unable to open file '%1' for %2 (error %3, flags %4).",
                 fileName_, append ? "appending" : "rewriting", code, flags);
    }
    return {};
}

CError CFileWriter::close()
{
    if (!file_.isOpen()) {
        return {};
    }
    if (const int code = file_.close(); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileWriter_close_Error Unable to close file '%1' after writing (error %2).",
                 fileName_, code);
    }
    return {};
}

CError CFileWriter::flush()
{
    if (const int code = file_.flush(); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileWriter_flush_Error Unable to write file '%1' to the disk (error %2).",
                 fileName_, code);
    }
    return {};
}

CError CFileWriter::write(const void* buffer, std::size_t count)
{
    std::size_t written = 0;
    if (const int code = file_.write(buffer, count, written); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileWriter_write_WriteError Unable to write to file '%1' (error %2).",
                 fileName_, code);
    }
    if (written != count) {
        QEL_FAIL({},
                 "@qelstr_CFileWriter_write_WriteErrorCount Unable to write to file '%1' (required %2 bytes, "
                 "written "
                 "%3 bytes).",
                 fileName_, count, written);
    }
    return {};
}

CError CFileWriter::getPosition(std::int64_t& out)
{
    if (const int code = file_.getPosition(out); code != 0) {
        QEL_FAIL({},
                 "@qelstr_CFileWriter_getPosition_Error Unable to get file writing position for file '%1' "
                 "(error %2).",
                 fileName_, code);
    }
    return {};
}

CError CFileWriter::setPosition(std::int64_t position)
{
    if (const int code = file_.setPosition(position); code != 0) {
        QEL_FAIL({},
                 "@qelstr_CFileWriter_setPosition_Error Unable to set file writing position for file '%1' "
                 "(error %2).",
                 fileName_, code);
    }
    return {};
}

CError CFileWriter::getSize(std::int64_t& out)
{
    if (const int code = file_.getSize(out); code != 0) {
        QEL_FAIL({}, "@qelstr_CFileWriter_getSize_Error Unable to get file size of file '%1' (error %2).",
                 fileName_, code);
    }
    return {};
}

} // namespace qel
