// The state of a guest in files.
#pragma once

#include "Render/CGuestPlugin.h"

#include <filesystem>

namespace qel::tools {

// Loads a Drumfell preset or bank (.cpf, .cbf), by its contents: they are the plug-in's chunks without their
// header. Throws CRenderError: kInput for a file that is neither, kSetting for another effect, or for one
// that refuses it.
void loadState(CGuestPlugin& guest, const std::filesystem::path& path);

} // namespace qel::tools
