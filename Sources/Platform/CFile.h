// One open file: the system's own calls with the system's own error numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qel {

// Owns one open file and closes it in the destructor, where a failure to close is lost: a writer that must
// know calls close() itself. Paths are UTF-8 with '/' separators. Only regular files open: a folder, pipe or
// device is refused at once instead of blocking. Every operation returns 0 or the system's error number; on a
// file that is not open it fails, but close() does nothing. After a failure the position is undefined. One
// thread at a time.
//
// The deny flags refuse other openers on Windows. Linux has nothing that binds a program that did not ask, so
// they have no effect there; whoever replaces a file others may read writes a new one and renames it into
// place.
class CFile
{
public:
    enum class Access
    {
        kRead,    // an existing file
        kAppend,  // write, positioned at the end; created when missing
        kRewrite, // write, emptied; created when missing
    };
    static constexpr unsigned kDenyRead = 1;
    static constexpr unsigned kDenyWrite = 2;

    CFile() = default;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile();

    // Closes what was open before.
    [[nodiscard]] int open(const std::string& path, Access access, unsigned denyFlags = 0);
    [[nodiscard]] int close();
    bool isOpen() const { return handle_ != kNoHandle; }

    // A count cut short by the end of the file (or by a full disk that took part of it) is success. After a
    // failure the count tells what was transferred before it.
    [[nodiscard]] int read(void* buffer, std::size_t count, std::size_t& outRead);
    [[nodiscard]] int write(const void* buffer, std::size_t count, std::size_t& outWritten);
    // Returns once the bytes are on the disk, so that a rename that follows cannot put an empty file in place
    // of a whole one when the power fails.
    [[nodiscard]] int flush();

    // A position beyond the end is allowed.
    [[nodiscard]] int getPosition(std::int64_t& out);
    [[nodiscard]] int setPosition(std::int64_t position);
    [[nodiscard]] int getSize(std::int64_t& out);

private:
    static constexpr std::intptr_t kNoHandle = -1;

    std::intptr_t handle_ = kNoHandle; // descriptor on Linux, HANDLE on Windows; -1 is invalid for both
};

} // namespace qel
