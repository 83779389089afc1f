// What the renderer asks of the operating system.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// The path in the form in which the system takes it, however long it is. For calls, not for texts.
std::filesystem::path systemPath(const std::filesystem::path& path);

// Null when it cannot be loaded; `outReason` tells why.
void* openLibrary(const std::filesystem::path& path, std::string& outReason);
void* findSymbol(void* library, const char* name);
void closeLibrary(void* library);

// "Drumfell.so" and the like, and the places where this program looks for it, best first.
const char* ownLibraryName();
std::vector<std::filesystem::path> ownLibraryFolders();

int processNumber();
// Calls the handler when the user or the system asks the program to end; a second time ends it at once.
void onInterruption(void (*handler)());

// The command line without the program's name, as UTF-8. Makes the console show UTF-8, too.
std::vector<std::string> programArguments(int argc, char** argv);

} // namespace qel::tools
