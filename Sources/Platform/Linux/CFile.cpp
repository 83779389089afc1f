// Files through descriptors.
#include "CFile.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace qel {

namespace {

using platform::retryInterrupted;

// Without O_NONBLOCK the open of a pipe would wait for its other end. Regular files ignore it.
constexpr int kCommonFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

int openFlags(CFile::Access access)
{
    return access == CFile::Access::kRead ? kCommonFlags | O_RDONLY : kCommonFlags | O_WRONLY | O_CREAT;
}

int requireRegularFile(int descriptor)
{
    struct stat info
    {};
    if (fstat(descriptor, &info) != 0) {
        return errno;
    }
    if (S_ISDIR(info.st_mode)) {
        return EISDIR;
    }
    return S_ISREG(info.st_mode) ? 0 : EINVAL;
}

// Emptied here and not by O_TRUNC, which would act before the kind of file is known.
int prepare(int descriptor, CFile::Access access)
{
    if (const int error = requireRegularFile(descriptor)) {
        return error;
    }
    if (access == CFile::Access::kRewrite) {
        return retryInterrupted([&] { return ftruncate(descriptor, 0); }) == 0 ? 0 : errno;
    }
    if (access == CFile::Access::kAppend) {
        return lseek(descriptor, 0, SEEK_END) >= 0 ? 0 : errno;
    }
    return 0;
}

} // namespace

CFile::~CFile()
{
    static_cast<void>(close());
}

int CFile::open(const std::string& path, Access access, unsigned /*denyFlags*/)
{
    static_cast<void>(close());
    if (!platform::isUsablePath(path)) {
        return EINVAL;
    }
    const int descriptor = retryInterrupted([&] {
        return ::open(path.c_str(), openFlags(access),
                      S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH);
    });
    if (descriptor < 0) {
        return errno;
    }
    if (const int error = prepare(descriptor, access)) {
        ::close(descriptor);
        return error;
    }
    if (access == Access::kRead) {
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    handle_ = descriptor;
    return 0;
}

int CFile::close()
{
    if (!isOpen()) {
        return 0;
    }
    const int descriptor = static_cast<int>(std::exchange(handle_, kNoHandle));
    // An interrupted close has released the descriptor all the same; closing again could hit another thread's
    // file.
    return ::close(descriptor) == 0 || errno == EINTR ? 0 : errno;
}

int CFile::read(void* buffer, std::size_t count, std::size_t& outRead)
{
    outRead = 0;
    while (outRead < count) {
        const ssize_t got = retryInterrupted([&] {
            return ::read(static_cast<int>(handle_), static_cast<char*>(buffer) + outRead, count - outRead);
        });
        if (got < 0) {
            return errno;
        }
        if (got == 0) {
            break;
        }
        outRead += static_cast<std::size_t>(got);
    }
    return 0;
}

int CFile::write(const void* buffer, std::size_t count, std::size_t& outWritten)
{
    outWritten = 0;
    while (outWritten < count) {
        const ssize_t put = retryInterrupted([&] {
            return ::write(static_cast<int>(handle_), static_cast<const char*>(buffer) + outWritten,
                           count - outWritten);
        });
        if (put < 0) {
            return errno;
        }
        if (put == 0) {
            break;
        }
        outWritten += static_cast<std::size_t>(put);
    }
    return 0;
}

int CFile::flush()
{
    return retryInterrupted([&] { return fsync(static_cast<int>(handle_)); }) == 0 ? 0 : errno;
}

int CFile::getPosition(std::int64_t& out)
{
    out = lseek(static_cast<int>(handle_), 0, SEEK_CUR);
    return out >= 0 ? 0 : errno;
}

int CFile::setPosition(std::int64_t position)
{
    return lseek(static_cast<int>(handle_), position, SEEK_SET) >= 0 ? 0 : errno;
}

int CFile::getSize(std::int64_t& out)
{
    struct stat info
    {};
    if (fstat(static_cast<int>(handle_), &info) != 0) {
        return errno;
    }
    out = info.st_size;
    return 0;
}

} // namespace qel
