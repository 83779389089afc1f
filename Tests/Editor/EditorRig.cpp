// An editor in a host's window on an X server of the tests' own.
#include "EditorRig.h"

#include <cstdio>
#include <stdexcept>

namespace qel::test {

namespace {

ViewPlaces askPlaces(const std::string& arguments)
{
    const std::string command = std::string(DRUMFELL_INSPECT) + " --views " + arguments + " 2>/dev/null";
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::string output;
    char part[4096];
    while (pipe && std::fgets(part, sizeof(part), pipe)) {
        output += part;
    }
    if (pipe) {
        pclose(pipe);
    }
    std::istringstream lines(output);
    return readPlaces(lines);
}

} // namespace

ViewPlace placeOf(const std::string& path, const std::string& arguments)
{
    static std::map<std::string, ViewPlaces> windows;
    if (!windows.contains(arguments)) {
        windows[arguments] = askPlaces(arguments);
    }
    const ViewPlaces& places = windows[arguments];
    const auto found = places.find(path);
    if (found == places.end()) {
        throw std::runtime_error("no view " + path);
    }
    return found->second;
}

} // namespace qel::test
