// Folder creation, which is the same walk on every system.
#include "FileSystem.h"

namespace qel::platform {

// Starts from the end, since upper folders (a share, a drive, another user's home) may exist without being
// visible or creatable.
int createFolders(const std::string& path)
{
    if (folderExists(path)) {
        return 0;
    }
    const std::size_t nameEnd = path.find_last_not_of('/');
    const std::size_t separator = nameEnd == std::string::npos ? nameEnd : path.rfind('/', nameEnd);
    if (separator != std::string::npos && separator > 0) {
        if (const int error = createFolders(path.substr(0, separator))) {
            return error;
        }
    }
    return createFolder(path);
}

} // namespace qel::platform
