// What the renderer asks of Linux.
#include "Render/RenderSystem.h"

#include <csignal>
#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

namespace qel::tools {

namespace fs = std::filesystem;

namespace {

void (*interruptionHandler)() = nullptr;

} // namespace

fs::path systemPath(const fs::path& path)
{
    return path;
}

void* openLibrary(const fs::path& path, std::string& outReason)
{
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char* reason = dlerror();
        outReason = reason ? reason : path.string() + ": cannot be loaded";
    }
    return library;
}

void* findSymbol(void* library, const char* name)
{
    return dlsym(library, name);
}

void closeLibrary(void* library)
{
    dlclose(library);
}

const char* ownLibraryName()
{
    return "Drumfell.so";
}

std::vector<fs::path> ownLibraryFolders()
{
    std::vector<fs::path> folders;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path above = program.parent_path().parent_path();
        folders = {above, above / "lib/vst"};
    }
    if (const char* home = std::getenv("HOME")) {
        folders.push_back(fs::path(home) / ".vst");
    }
    return folders;
}

int processNumber()
{
    return getpid();
}

void onInterruption(void (*handler)())
{
    interruptionHandler = handler;
    struct sigaction action = {};
    action.sa_handler = [](int) { interruptionHandler(); };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaction(number, &action, nullptr);
    }
}

std::vector<std::string> programArguments(int argc, char** argv)
{
    return {argv + (argc > 0), argv + argc};
}

} // namespace qel::tools
