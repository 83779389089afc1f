// The bytes that are built into the program, by name.
#include "Streams/ResourceMap.h"

namespace qel {

namespace {

CStringMap<std::span<const std::uint8_t>>& resourceMap()
{
    static CStringMap<std::span<const std::uint8_t>> map;
    return map;
}

} // namespace

void registerResource(const CString& name, std::span<const std::uint8_t> bytes)
{
    resourceMap().insert_or_assign(name, bytes);
}

void registerResourceDirectory(const CResourceRow* table)
{
    constexpr std::size_t kHeadBytes = 4;
    for (; table->record; ++table) {
        std::uint32_t length = 0;
        for (std::size_t i = 0; i < kHeadBytes; ++i) {
            length |= std::uint32_t{table->record[i]} << (8 * i);
        }
        registerResource(table->name, {table->record + kHeadBytes, length});
    }
}

std::optional<std::span<const std::uint8_t>> findResource(const CString& name)
{
    const auto found = resourceMap().find(name);
    if (found == resourceMap().end()) {
        return std::nullopt;
    }
    return found->second;
}

} // namespace qel
