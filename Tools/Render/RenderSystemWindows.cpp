// What the renderer asks of Windows.
#include "Render/RenderSystem.h"

#include "Windows/WideText.h"

#include <atomic>
#include <system_error>

#include <windows.h>

#include <shellapi.h>

namespace qel::tools {

namespace fs = std::filesystem;

namespace {

std::atomic<void (*)()> interruptionHandler = nullptr;

BOOL WINAPI takeInterruption(DWORD)
{
    void (*const handler)() = interruptionHandler.exchange(nullptr);
    if (handler) {
        handler();
    }
    return handler != nullptr; // FALSE: the system ends the program
}

} // namespace

fs::path systemPath(const fs::path& path)
{
    std::error_code error;
    const fs::path whole = fs::absolute(path, error); // a folder counts too that is not named
    std::wstring wide;
    return error || platform::widePath(whole.string(), wide) ? path : fs::path(wide);
}

void* openLibrary(const fs::path& path, std::string& outReason)
{
    // A library that brings others finds them beside itself.
    HMODULE library = LoadLibraryExW(systemPath(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!library) {
        outReason = path.string() + ": " +
                    std::error_code(static_cast<int>(GetLastError()), std::system_category()).message();
    }
    return library;
}

void* findSymbol(void* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void closeLibrary(void* library)
{
    FreeLibrary(static_cast<HMODULE>(library));
}

const char* ownLibraryName()
{
    return "Drumfell.dll";
}

std::vector<fs::path> ownLibraryFolders()
{
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    const fs::path folder = fs::path(program).parent_path();
    return {folder, folder.parent_path()};
}

int processNumber()
{
    return static_cast<int>(GetCurrentProcessId());
}

void onInterruption(void (*handler)())
{
    interruptionHandler = handler;
    SetConsoleCtrlHandler(&takeInterruption, TRUE);
}

// The runtime's own arguments have lost what the system's code page lacks.
std::vector<std::string> programArguments(int, char**)
{
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(fs::path(wide[i]).string());
    }
    LocalFree(wide);
    return arguments;
}

} // namespace qel::tools
