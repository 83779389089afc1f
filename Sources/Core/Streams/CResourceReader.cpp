// Reader of a built-in resource or of a file.
#include "Streams/CResourceReader.h"

#include "Streams/CFileReader.h"
#include "Streams/CMemoryReader.h"
#include "Streams/ResourceMap.h"

namespace qel {

namespace {

// From the root of a file system on, or from a drive's.
bool isAbsolutePath(const CString& name)
{
    return name.startsWith("/") || name.startsWith("\\") || (name.length() > 1 && name[1] == u':');
}

} // namespace

CError CResourceReader::open(const CString& name)
{
    QEL_TRY(close(), {});
    if (const auto bytes = findResource(name)) {
        inner_ = std::make_unique<CMemoryReader>(*bytes);
        return {};
    }
    if (!isAbsolutePath(name)) {
        QEL_FAIL({}, "@qelstr_CResourceReader_open_NotFound There is no built-in resource '%1'.", name);
    }
    auto file = std::make_unique<CFileReader>();
    QEL_TRY(file->open(name, 0), {});
    inner_ = std::move(file);
    return {};
}

CError CResourceReader::close()
{
    if (const auto inner = std::move(inner_)) {
        QEL_TRY(inner->close(), {});
    }
    return {};
}

CError CResourceReader::requireOpen() const
{
    if (!inner_) {
        QEL_FAIL({}, "@qelstr_CResourceReader_NotOpen No resource opened.");
    }
    return {};
}

CError CResourceReader::consume(std::size_t count)
{
    QEL_TRY(requireOpen(), {});
    QEL_TRY(inner_->consume(count), {});
    return {};
}

CError CResourceReader::read(void* buffer, std::size_t count)
{
    QEL_TRY(requireOpen(), {});
    QEL_TRY(inner_->read(buffer, count), {});
    return {};
}

CError CResourceReader::readStreamed(void* buffer, std::size_t& inOutCount)
{
    QEL_TRY(requireOpen(), {});
    QEL_TRY(inner_->readStreamed(buffer, inOutCount), {});
    return {};
}

CError CResourceReader::getPosition(std::int64_t& out)
{
    QEL_TRY(requireOpen(), {});
    QEL_TRY(inner_->getPosition(out), {});
    return {};
}

CError CResourceReader::setPosition(std::int64_t position)
{
    QEL_TRY(requireOpen(), {});
    QEL_TRY(inner_->setPosition(position), {});
    return {};
}

CError CResourceReader::getSize(std::int64_t& out)
{
    QEL_TRY(requireOpen(), {});
    QEL_TRY(inner_->getSize(out), {});
    return {};
}

} // namespace qel
