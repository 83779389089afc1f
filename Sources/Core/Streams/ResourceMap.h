// The bytes that are built into the program, by name.
#pragma once

#include "CString.h"

#include <cstdint>
#include <optional>
#include <span>

namespace qel {

// One row of a resource directory. A record is a little-endian u32 byte count followed by that many bytes;
// the name ends with a zero. The first row without a record ends the table.
struct CResourceRow
{
    const std::uint8_t* record;
    const char* name;
};

// One map for the whole process, filled while the application starts and before any other thread looks; from
// then on it only changes in tests, and any thread may read it. A name means itself, "../" and all: it is no
// path. The bytes are not copied and must live as long as the process. A later duplicate replaces the earlier
// value.
void registerResource(const CString& name, std::span<const std::uint8_t> bytes);
void registerResourceDirectory(const CResourceRow* table);
std::optional<std::span<const std::uint8_t>> findResource(const CString& name);

} // namespace qel
