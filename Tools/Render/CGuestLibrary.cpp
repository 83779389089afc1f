// A VST 2.4 library in this process.
#include "Render/CGuestLibrary.h"

#include "Render/RenderError.h"
#include "Render/RenderSystem.h"

namespace qel::tools {

namespace fs = std::filesystem;

CGuestLibrary::CGuestLibrary(const fs::path& path)
{
    // A name without a folder would be looked for among the system's libraries.
    std::error_code error;
    path_ = fs::absolute(path, error);
    if (!fs::exists(systemPath(path_), error)) {
        throw CRenderError(CExitCode::kLibrary, path.string() + ": there is no such library");
    }
    std::string reason;
    handle_ = openLibrary(path_, reason);
    if (!handle_) {
        throw CRenderError(CExitCode::kLibrary, reason);
    }
    for (const char* name : {"VSTPluginMain", "main"}) {
        if (void* symbol = findSymbol(handle_, name)) {
            entry_ = reinterpret_cast<VstPluginEntry>(symbol);
            return;
        }
    }
    closeLibrary(handle_);
    throw CRenderError(CExitCode::kLibrary, path.string() + ": exports no VST 2.4 entry");
}

CGuestLibrary::~CGuestLibrary()
{
    closeLibrary(handle_);
}

fs::path findOwnLibrary()
{
    std::error_code error;
    std::string tried;
    for (const fs::path& folder : ownLibraryFolders()) {
        const fs::path place = folder / ownLibraryName();
        if (fs::exists(systemPath(place), error)) {
            return place;
        }
        tried += "\n  " + place.string();
    }
    throw CRenderError(CExitCode::kLibrary, std::string(ownLibraryName()) +
                                                " was not found; name a library with --plugin." +
                                                " Looked for:" + tried);
}

} // namespace qel::tools
