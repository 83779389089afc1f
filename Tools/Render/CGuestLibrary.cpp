// A VST 2.4 library in this process.
#include "Render/CGuestLibrary.h"

#include "Render/RenderError.h"

#include <cstdlib>
#include <vector>

#include <dlfcn.h>

namespace qel::tools {

namespace fs = std::filesystem;

CGuestLibrary::CGuestLibrary(const fs::path& path)
{
    // A name without a folder would be looked for among the system's libraries.
    std::error_code error;
    path_ = fs::absolute(path, error);
    if (!fs::exists(path_, error)) {
        throw CRenderError(CExitCode::kLibrary, path.string() + ": there is no such library");
    }
    handle_ = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) {
        const char* reason = dlerror();
        throw CRenderError(CExitCode::kLibrary, reason ? reason : path.string() + ": cannot be loaded");
    }
    for (const char* name : {"VSTPluginMain", "main"}) {
        if (void* symbol = dlsym(handle_, name)) {
            entry_ = reinterpret_cast<VstPluginEntry>(symbol);
            return;
        }
    }
    dlclose(handle_);
    throw CRenderError(CExitCode::kLibrary, path.string() + ": exports no VST 2.4 entry");
}

CGuestLibrary::~CGuestLibrary()
{
    dlclose(handle_);
}

fs::path findOwnLibrary()
{
    constexpr const char* kFileName = "Drumfell.so";
    std::vector<fs::path> places;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path above = program.parent_path().parent_path();
        places.push_back(above / kFileName);
        places.push_back(above / "lib/vst" / kFileName);
    }
    if (const char* home = std::getenv("HOME")) {
        places.push_back(fs::path(home) / ".vst" / kFileName);
    }
    std::string tried;
    for (const fs::path& place : places) {
        if (fs::exists(place, error)) {
            return place;
        }
        tried += "\n  " + place.string();
    }
    throw CRenderError(CExitCode::kLibrary, std::string(kFileName) +
                                                " was not found; name a library with --plugin." +
                                                " Looked for:" + tried);
}

} // namespace qel::tools
