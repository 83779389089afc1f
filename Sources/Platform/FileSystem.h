// Files and folders by name, the folders of application data, and who this process is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Paths are UTF-8 with '/' separators, in and out. Folders come without a '/' at the end. Functions that can
// fail return 0 or the system's error number. All may be called from any thread, but they wait for the disk.
namespace qel::platform {

bool fileExists(const std::string& path); // a regular file, or a link to one
bool folderExists(const std::string& path);

// Creates one folder, or that folder and all missing ones above it. A folder that is there already is
// success.
[[nodiscard]] int createFolder(const std::string& path);
[[nodiscard]] int createFolders(const std::string& path);

// Replaces an existing `to` in one step: other programs see the old file or the new one, never none and never
// half.
[[nodiscard]] int renameFile(const std::string& from, const std::string& to);
[[nodiscard]] int removeFile(const std::string& path);

// The folder that is the user's own: $HOME where that is an absolute path, or the profile.
[[nodiscard]] int homeFolder(std::string& out);
// The folder of the user's application data. Linux: $XDG_DATA_HOME, else $HOME/.local/share; a value that is
// not an absolute path counts as unset, and without either the look-up fails. Windows: roaming application
// data.
[[nodiscard]] int userDataFolder(std::string& out);
// Folders of application data for all users, in the order to look through them.
[[nodiscard]] int commonDataFolders(std::vector<std::string>& out);

// Path of the library or program that this code is linked into; empty when the system does not tell.
std::string modulePath();
std::uint32_t processId();

} // namespace qel::platform
