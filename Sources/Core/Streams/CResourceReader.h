// Reader of a built-in resource or of a file.
#pragma once

#include "Streams/CPosInputStream.h"

#include <memory>

namespace qel {

// The only way to the program's resources: a name means the built-in bytes of that name, and nothing else; an
// absolute path means a file. A relative path would be looked up in the host's working directory, where
// anybody may have put a file of that name. Owned by the opener; owns the stream it forwards to. Every call
// but open() and close() fails while nothing is open.
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
