// Reader of a file.
#pragma once

#include "CFile.h"
#include "Streams/CPosInputStream.h"

namespace qel {

// Reads a file from front to back or at a position. Errors name the file, with forward slashes on every
// system, and the system's error number. open() on an open reader closes it first. May block.
class CFileReader : public CPosInputStream
{
public:
    CFileReader() = default;
    ~CFileReader() override;

    // `flags`: bit 0 denies others reading, bit 1 writing, where the system knows such a thing.
    CError open(const CString& path, unsigned flags);
    CError close() override;
    CError consume(std::size_t count) override;
    CError read(void* buffer, std::size_t count) override;
    CError readStreamed(void* buffer, std::size_t& inOutCount) override;
    CError getPosition(std::int64_t& out) override;
    CError setPosition(std::int64_t position) override;
    CError getSize(std::int64_t& out) override;

private:
    CFile file_;
    CString fileName_;
};

} // namespace qel
