// Small pictures: PNG with a palette.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace qel::tools {

// Rows of `width` pixels, each 0xRRGGBB. Up to 256 colours are kept as they are; of more, those that lie
// close together become one (median cut). Throws CToolError if the file cannot be written.
void writeIndexedPng(const std::filesystem::path& path, std::span<const std::uint32_t> pixels,
                     std::size_t width);

} // namespace qel::tools
