// The state of a guest in files.
#pragma once

#include "Render/CGuestPlugin.h"

#include <filesystem>

namespace qel::tools {

// Loads what the file holds by its contents: a host's preset or bank (.fxp, .fxb), or a Drumfell preset or
// bank
// (.cpf, .cbf), which are its chunks without their header. The effect's id must fit. Throws CRenderError:
// kInput for a bad file, kSetting for one that is not for this effect or that it refuses.
void loadState(CGuestPlugin& guest, const std::filesystem::path& path);

// Saves by what the name ends in. An effect without chunks is saved as plain parameters. Throws CRenderError:
// kOutput, or kSetting if the effect gives no state.
void saveState(CGuestPlugin& guest, const std::filesystem::path& path);

} // namespace qel::tools
