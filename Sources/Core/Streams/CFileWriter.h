// Writer of a file.
#pragma once

#include "CFile.h"
#include "Streams/CPosOutputStream.h"

namespace qel {

// Writes a file, new or at the end of an existing one. Errors name the file, with forward slashes on every
// system, and the system's error number. The destructor closes the file and drops a failure, so whoever cares
// about the data calls close(). open() on an open writer closes it first. May block.
class CFileWriter : public CPosOutputStream
{
public:
    CFileWriter() = default;
    ~CFileWriter() override;

    // `append` keeps the file's contents and starts at their end, otherwise they are dropped; the file is
    // made if it is not there. `flags`: bit 0 denies others reading, bit 1 writing, where the system knows
    // such a thing.
    CError open(const CString& path, unsigned flags, bool append);
    CError close();
    // Returns once the bytes are on the disk: before a rename that puts the file in another one's place.
    CError flush();
    CError write(const void* buffer, std::size_t count) override;
    CError getPosition(std::int64_t& out) override;
    CError setPosition(std::int64_t position) override;
    CError getSize(std::int64_t& out) override;

private:
    CFile file_;
    CString fileName_;
};

} // namespace qel
