// From presets back to XML.
#pragma once

#include "PresetCompiler/CPresetInstance.h"
#include "PresetCompiler/PresetFile.h"

#include <string>

namespace qel::tools {

// The XML that CPresetCompiler compiles to a file of the same presets. Entries that fit no parameter become
// <inert>, so that nothing is lost to the reader. Throws CToolError for presets that belong to no registry or
// to several, and for damaged entries.
std::string decompilePresets(const CPresetFile& file, CPresetInstance& instance);

} // namespace qel::tools
