// The preset and bank files that all VST 2.4 hosts share (.fxp and .fxb).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace qel::tools {

using CBytes = std::vector<std::uint8_t>;

struct CHostProgram
{
    std::string name; // at most 27 bytes
    std::variant<CBytes, std::vector<float>>
        content; // the effect's own chunk, or the value of each parameter

    bool operator==(const CHostProgram&) const = default;
};

struct CHostBank
{
    std::int32_t currentProgram = 0;
    std::variant<CBytes, std::vector<CHostProgram>> content; // a chunk, or programs of plain parameters
    std::int32_t programCount = 0;                           // with a chunk: as the file tells

    bool operator==(const CHostBank&) const = default;
};

struct CHostState
{
    std::int32_t uniqueId = 0;
    std::int32_t version = 0; // of the effect
    std::variant<CHostProgram, CHostBank> content;

    bool operator==(const CHostState&) const = default;
};

bool isHostState(std::span<const std::uint8_t> bytes);
// Throws CRenderError (kInput) with what is wrong; believes no count or size that the bytes do not bear out.
CHostState decodeHostState(std::span<const std::uint8_t> bytes);
CBytes encodeHostState(const CHostState& state);

} // namespace qel::tools
