// Files of presets, of any of their three kinds.
#pragma once

#include "CAudioPresetBank.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qel::tools {

// A file holds a bank, a list, or a single preset, which then is the only one of `presets`.
struct CPresetFile
{
    enum class Kind
    {
        kBank,   // "abnk", *.cbf
        kList,   // "alst", what the application-data stores keep
        kPreset, // "aprs", *.cpf
    };

    Kind kind = Kind::kBank;
    CAudioPresetBank presets;

    friend bool operator==(const CPresetFile& a, const CPresetFile& b) = default;
};

// The body as it is before compression. Throws CToolError, as all of these.
std::vector<std::uint8_t> encodePresets(const CPresetFile& file);
CPresetFile readPresetFile(const std::string& path);
// Replaces a file only once the new one is complete.
void writePresetFile(const CPresetFile& file, const std::string& path);

} // namespace qel::tools
