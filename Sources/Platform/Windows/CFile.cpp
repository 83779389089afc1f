// Files through handles.
#include "CFile.h"

#include "WideText.h"
#include "WindowsApi.h"

#include <algorithm>
#include <utility>

namespace qel {

namespace {

using platform::lastError;

// One call transfers at most this much, far below what its 32-bit count could hold.
constexpr std::size_t kMaxTransferBytes = std::size_t{1} << 30;

HANDLE toHandle(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

DWORD sharing(unsigned denyFlags)
{
    const DWORD readers = denyFlags & CFile::kDenyRead ? 0 : FILE_SHARE_READ;
    const DWORD writers = denyFlags & CFile::kDenyWrite ? 0 : FILE_SHARE_WRITE;
    return readers | writers;
}

HANDLE openHandle(const std::wstring& path, CFile::Access access, unsigned denyFlags)
{
    if (access == CFile::Access::kRead) {
        return CreateFileW(path.c_str(), GENERIC_READ, sharing(denyFlags), nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    }
    const DWORD disposition = access == CFile::Access::kAppend ? OPEN_ALWAYS : CREATE_ALWAYS;
    return CreateFileW(path.c_str(), GENERIC_WRITE, sharing(denyFlags), nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

int prepare(HANDLE handle, CFile::Access access)
{
    // Names like "con" or "com1" open devices, whatever folder stands before them.
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        return ERROR_BAD_FILE_TYPE;
    }
    const LARGE_INTEGER none{};
    if (access == CFile::Access::kAppend && !SetFilePointerEx(handle, none, nullptr, FILE_END)) {
        return lastError();
    }
    return 0;
}

} // namespace

CFile::~CFile()
{
    static_cast<void>(close());
}

int CFile::open(const std::string& path, Access access, unsigned denyFlags)
{
    static_cast<void>(close());
    std::wstring wide;
    if (const int error = platform::widePath(path, wide)) {
        return error;
    }
    const HANDLE handle = openHandle(wide, access, denyFlags);
    if (handle == INVALID_HANDLE_VALUE) {
        return lastError();
    }
    if (const int error = prepare(handle, access)) {
        CloseHandle(handle);
        return error;
    }
    handle_ = reinterpret_cast<std::intptr_t>(handle);
    return 0;
}

int CFile::close()
{
    if (!isOpen()) {
        return 0;
    }
    return CloseHandle(toHandle(std::exchange(handle_, kNoHandle))) ? 0 : lastError();
}

int CFile::read(void* buffer, std::size_t count, std::size_t& outRead)
{
    outRead = 0;
    while (outRead < count) {
        const auto part = static_cast<DWORD>(std::min(count - outRead, kMaxTransferBytes));
        DWORD got = 0;
        if (!ReadFile(toHandle(handle_), static_cast<char*>(buffer) + outRead, part, &got, nullptr)) {
            return lastError();
        }
        if (got == 0) {
            break;
        }
        outRead += got;
    }
    return 0;
}

int CFile::write(const void* buffer, std::size_t count, std::size_t& outWritten)
{
    outWritten = 0;
    while (outWritten < count) {
        const auto part = static_cast<DWORD>(std::min(count - outWritten, kMaxTransferBytes));
        DWORD put = 0;
        if (!WriteFile(toHandle(handle_), static_cast<const char*>(buffer) + outWritten, part, &put,
                       nullptr)) {
            return lastError();
        }
        if (put == 0) {
            break;
        }
        outWritten += put;
    }
    return 0;
}

int CFile::flush()
{
    return FlushFileBuffers(toHandle(handle_)) ? 0 : lastError();
}

int CFile::getPosition(std::int64_t& out)
{
    const LARGE_INTEGER none{};
    LARGE_INTEGER position{};
    const bool isDone = SetFilePointerEx(toHandle(handle_), none, &position, FILE_CURRENT);
    out = position.QuadPart;
    return isDone ? 0 : lastError();
}

int CFile::setPosition(std::int64_t position)
{
    LARGE_INTEGER target{};
    target.QuadPart = position;
    return SetFilePointerEx(toHandle(handle_), target, nullptr, FILE_BEGIN) ? 0 : lastError();
}

int CFile::getSize(std::int64_t& out)
{
    LARGE_INTEGER size{};
    const bool isDone = GetFileSizeEx(toHandle(handle_), &size);
    out = size.QuadPart;
    return isDone ? 0 : lastError();
}

} // namespace qel
