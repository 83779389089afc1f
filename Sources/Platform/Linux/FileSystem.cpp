// Files and folders by name, through POSIX.
#include "FileSystem.h"

#include "SystemCall.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace qel::platform {

namespace {

bool isKind(const std::string& path, mode_t kind)
{
    struct stat info
    {};
    return isUsablePath(path) && stat(path.c_str(), &info) == 0 && (info.st_mode & S_IFMT) == kind;
}

// The folder an environment variable names, without '/' at its end; empty unless absolute.
std::string folderFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    std::string folder = value ? value : "";
    if (folder.empty() || folder.front() != '/') {
        return {};
    }
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return folder;
}

std::string absolutePath(const char* path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path, nullptr), &std::free);
    return resolved ? resolved.get() : "";
}

} // namespace

bool fileExists(const std::string& path)
{
    return isKind(path, S_IFREG);
}

bool folderExists(const std::string& path)
{
    return isKind(path, S_IFDIR);
}

int createFolder(const std::string& path)
{
    if (!isUsablePath(path)) {
        return EINVAL;
    }
    if (mkdir(path.c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0) {
        return 0;
    }
    const int error = errno;
    return error == EEXIST && folderExists(path) ? 0 : error;
}

int renameFile(const std::string& from, const std::string& to)
{
    if (!isUsablePath(from) || !isUsablePath(to)) {
        return EINVAL;
    }
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int removeFile(const std::string& path)
{
    if (!isUsablePath(path)) {
        return EINVAL;
    }
    return unlink(path.c_str()) == 0 ? 0 : errno;
}

int homeFolder(std::string& out)
{
    out = folderFromEnvironment("HOME");
    return out.empty() ? ENOENT : 0;
}

int userDataFolder(std::string& out)
{
    out = folderFromEnvironment("XDG_DATA_HOME");
    if (!out.empty()) {
        return 0;
    }
    const std::string home = folderFromEnvironment("HOME");
    if (home.empty()) {
        return ENOENT;
    }
    out = (home == "/" ? "" : home) + "/.local/share";
    return 0;
}

int commonDataFolders(std::vector<std::string>& out)
{
    out = {"/usr/local/share", "/usr/share"};
    return 0;
}

std::string modulePath()
{
    static const char anchor = 0;
    Dl_info info{};
    link_map* module = nullptr;
    if (!dladdr1(&anchor, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) || !module) {
        return {};
    }
    // The program itself has no name there. A library has the one it was loaded by, which may be relative.
    if (module->l_name[0] == '\0') {
        return absolutePath("/proc/self/exe");
    }
    return module->l_name[0] == '/' ? module->l_name : absolutePath(module->l_name);
}

std::uint32_t processId()
{
    return static_cast<std::uint32_t>(getpid());
}

} // namespace qel::platform
