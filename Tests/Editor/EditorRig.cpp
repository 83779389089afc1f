// An editor in a host's window on an X server of the tests' own.
#include "EditorRig.h"

#include <cstdio>
#include <map>
#include <sstream>
#include <stdexcept>

namespace qel::test {

namespace {

using Places = std::map<std::string, ViewPlace>;

// Lines are "path <tag> x y width height ...".
Places readPlaces(const std::string& arguments)
{
    const std::string command = std::string(DRUMFELL_INSPECT) + " --views " + arguments + " 2>/dev/null";
    std::FILE* const pipe = popen(command.c_str(), "r");
    Places places;
    char line[4096];
    while (pipe && std::fgets(line, sizeof(line), pipe)) {
        std::istringstream words(line);
        std::string path;
        std::string tag;
        double numbers[4] = {};
        words >> path >> tag >> numbers[0] >> numbers[1] >> numbers[2] >> numbers[3];
        places[path] = {static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
                        static_cast<int>(numbers[2]), static_cast<int>(numbers[3])};
    }
    if (pipe) {
        pclose(pipe);
    }
    return places;
}

} // namespace

ViewPlace placeOf(const std::string& path, const std::string& arguments)
{
    static std::map<std::string, Places> windows;
    if (!windows.contains(arguments)) {
        windows[arguments] = readPlaces(arguments);
    }
    const Places& places = windows[arguments];
    const auto found = places.find(path);
    if (found == places.end()) {
        throw std::runtime_error("no view " + path);
    }
    return found->second;
}

} // namespace qel::test
