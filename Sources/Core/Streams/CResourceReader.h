// Reader of a built-in resource or of a file.
#pragma once

#include "Streams/CPosInputStream.h"

#include <memory>

namespace qel {

// The only way to the program's resources: a name that the resource map knows gives the built-in bytes, any
// other is taken as the path of a file, so that every resource may also be a real file. Owned by the opener;
// owns the stream it forwards to. Every call but open() and close() fails while nothing is open.
class CResourceReader : public CPosInputStream
{
public:
    CResourceReader() = default;

    // Closes what was open.
    CError open(const CString& name);
    CError close() override;
    CError consume(std::size_t count) override;
    CError read(void* buffer, std::size_t count) override;
    CError readStreamed(void* buffer, std::size_t& inOutCount) override;
    CError getPosition(std::int64_t& out) override;
    CError setPosition(std::int64_t position) override;
    CError getSize(std::int64_t& out) override;

private:
    CError requireOpen() const;

    std::unique_ptr<CPosInputStream> inner_;
};

} // namespace qel
