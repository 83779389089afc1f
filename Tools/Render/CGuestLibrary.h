// A VST 2.4 library in this process.
#pragma once

#include "Vst24.h"

#include <filesystem>

namespace qel::tools {

// Loads the library and finds its entry; unloads it when destroyed, so every instance must be gone by then.
// Throws CRenderError (kLibrary).
class CGuestLibrary
{
public:
    explicit CGuestLibrary(const std::filesystem::path& path);
    ~CGuestLibrary();
    CGuestLibrary(const CGuestLibrary&) = delete;
    CGuestLibrary& operator=(const CGuestLibrary&) = delete;

    VstPluginEntry entry() const { return entry_; }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
    void* handle_ = nullptr;
    VstPluginEntry entry_ = nullptr;
};

// Drumfell as it stands beside this program: that of the same build, of the same installation, or the user's
// own. Throws when there is none.
std::filesystem::path findOwnLibrary();

} // namespace qel::tools
